#include "chronoweave/engine/search_names.h"

#include <algorithm>
#include <set>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr size_t most_near = 3;
constexpr size_t longest_compared = 64;

std::string lower(std::string_view text) {
    std::string low(text);
    for (char& c : low) c = text_lower(c);
    return low;
}

// How many letters must be put in, taken out or changed.
size_t distance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return row[b.size()];
}

std::string id_list(const std::vector<uint32_t>& ids) {
    std::string list;
    for (size_t i = 0; i < ids.size() && i < 4; ++i) list += (i > 0 ? ", " : "") + gen_format("0x%x", ids[i]);
    return ids.size() > 4 ? list + gen_format(" and %zu more", ids.size() - 4) : list;
}

std::vector<uint32_t> known_of_name(std::string_view name, const std::vector<uint32_t>& known,
                                    const ObjectNames& names, bool foldCase) {
    std::vector<uint32_t> ids;
    for (const uint32_t id : known) {
        const std::string* own = names.find(id);
        if (own && (foldCase ? text_equal_nocase(*own, name) : *own == name)) ids.push_back(id);
    }
    return ids;
}

std::string unknown_name(const char* what, std::string_view name,
                         const std::vector<std::string>& candidates) {
    return gen_format("there is no %s \"", what) + std::string(name) + '"' +
           analysis_NearNames(name, candidates);
}

std::string unknown_object(std::string_view name, const std::vector<uint32_t>& known,
                           const ObjectNames& names) {
    std::set<std::string> candidates;
    for (const uint32_t id : known)
        if (const std::string* own = names.find(id)) candidates.insert(*own);
    return unknown_name("object", name, {candidates.begin(), candidates.end()});
}

}  // namespace

std::string analysis_NearNames(std::string_view text, std::span<const std::string> candidates) {
    const std::string wanted = lower(text.substr(0, longest_compared));
    std::vector<std::pair<size_t, const std::string*>> near;
    std::set<std::string_view> seen;
    for (const std::string& candidate : candidates) {
        if (!seen.insert(candidate).second) continue;
        const std::string other = lower(std::string_view(candidate).substr(0, longest_compared));
        const bool within =
            wanted.size() >= 3 && other.size() >= 3 &&
            (other.find(wanted) != std::string::npos || wanted.find(other) != std::string::npos);
        const size_t far = within ? 1 : distance(wanted, other);
        if (far <= std::max<size_t>(2, wanted.size() / 3)) near.emplace_back(far, &candidate);
    }
    std::stable_sort(near.begin(), near.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::string list;
    for (size_t i = 0; i < near.size() && i < most_near; ++i)
        list += (i > 0 ? ", \"" : "; near: \"") + *near[i].second + '"';
    return list;
}

Result analysis_FindEvent(const Legend& legend, std::string_view name, int32_t& row) {
    std::vector<std::string> candidates;
    for (const LegendEvent& event : legend.events) {
        if (event.IsCategory()) continue;
        if (text_equal_nocase(event.name, name)) {
            row = legend.EventByName(name);
            return {};
        }
        candidates.push_back(event.name);
    }
    return Result::failure(unknown_name("event", name, candidates));
}

Result analysis_FindStatus(const Legend& legend, std::string_view name, int32_t& row) {
    std::vector<std::string> candidates;
    for (const LegendStatus& status : legend.statuses) {
        if (text_equal_nocase(status.name, name)) {
            row = legend.StatusByName(name);
            return {};
        }
        candidates.push_back(status.name);
    }
    return Result::failure(unknown_name("status", name, candidates));
}

Result analysis_FindObjects(std::string_view text, const std::vector<uint32_t>& known,
                            const ObjectNames& names, bool nameMeansAll, std::vector<uint32_t>& ids) {
    if (text == "*") {
        ids = known;
        return {};
    }
    if (const auto number = scan_number(text)) {
        if (*number <= UINT32_MAX &&
            std::binary_search(known.begin(), known.end(), static_cast<uint32_t>(*number))) {
            ids = {static_cast<uint32_t>(*number)};
            return {};
        }
        // A name may look like a number.
        if (known_of_name(text, known, names, false).empty())
            return Result::failure("there is no object " + std::string(text) + " in the trace");
    }
    ids = known_of_name(text, known, names, false);
    if (ids.empty()) ids = known_of_name(text, known, names, true);
    if (ids.empty() && nameMeansAll)
        for (const uint32_t id : known)
            if (const std::string* own = names.find(id); own && text_matches(text, *own)) ids.push_back(id);
    if (ids.empty()) return Result::failure(unknown_object(text, known, names));
    if (ids.size() > 1 && !nameMeansAll)
        return Result::failure('"' + std::string(text) +
                               "\" is the name of several objects: " + id_list(ids) + "; give an id");
    return {};
}

Result analysis_FindObject(std::string_view text, const std::vector<uint32_t>& known,
                           const ObjectNames& names, uint32_t& id) {
    std::vector<uint32_t> ids;
    if (Result found = analysis_FindObjects(text, known, names, false, ids); !found) return found;
    if (ids.size() != 1) return Result::failure("one object is needed, not all");
    id = ids.front();
    return {};
}
