#include "services/descriptions/description.h"

#include <algorithm>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

std::string_view takeWord(std::string_view& line) {
    line = text_trim(line);
    const size_t end = std::min(line.find_first_of(" \t"), line.size());
    const std::string_view word = line.substr(0, end);
    line = text_trim(line.substr(end));
    return word;
}

class Parser {
  public:
    Parser(std::string file, std::vector<DescribedService>& services)
        : file_(std::move(file)), services_(services) {}

    Result parse(std::string_view text) {
        std::string_view line;
        while (problem_.empty() && text_next_line(text, line)) {
            ++number_;
            line = text_trim(line);
            if (!line.empty() && line[0] != '#') parseLine(line);
        }
        for (DescribedService& service : services_) numberMessages(service);
        if (problem_.empty()) return {};
        return Result::failure(problem_, gen_format("%s:%zu", file_.c_str(), number_));
    }

  private:
    void parseLine(std::string_view line) {
        std::string_view rest = line;
        const std::string_view word = takeWord(rest);
        if (word == "service") {
            services_.emplace_back().name = rest;
            receiver_ = nullptr;
        } else if (services_.empty()) {
            problem_ = "a service must come first";
        } else {
            parseItem(services_.back(), word, rest);
        }
    }

    void parseItem(DescribedService& service, std::string_view word, std::string_view rest) {
        if (word == "version")
            service.version = rest;
        else if (word == "form")
            parseForm(service, rest);
        else if (word == "side")
            parseSide(service, rest);
        else if (word == "to")
            parseReceiver(service, rest);
        else if (word == "receives")
            parseNames(service.receives, rest);
        else if (word == "sends")
            parseNames(service.sends, rest);
        else
            parseMessage(word, rest);
    }

    void parseForm(DescribedService& service, std::string_view rest) {
        if (rest != "text" && rest != "binary") problem_ = "the form is text or binary";
        service.form = rest == "binary" ? STPBodyForm::Binary : STPBodyForm::Text;
    }

    void parseSide(DescribedService& service, std::string_view rest) {
        DescribedSide& side = service.sides.emplace_back();
        side.name = takeWord(rest);
        if (!rest.empty()) side.id = static_cast<uint32_t>(scan_number(rest).value_or(0));
        if (!rest.empty() && side.id == 0) problem_ = "an id is a number from 1";
    }

    void parseReceiver(DescribedService& service, std::string_view rest) {
        const auto side =
            std::find_if(service.sides.begin(), service.sides.end(),
                         [&](const DescribedSide& candidate) { return candidate.name == rest; });
        if (side == service.sides.end())
            problem_ = "no such side";
        else
            receiver_ = &*side;
    }

    static void parseNames(std::vector<std::string>& names, std::string_view rest) {
        while (!rest.empty()) names.emplace_back(takeWord(rest));
    }

    void parseMessage(std::string_view name, std::string_view rest) {
        if (!receiver_) {
            problem_ = "a message needs a side that receives it";
            return;
        }
        DescribedMessage& message = receiver_->receives.emplace_back();
        message.name = name;
        if (rest.empty()) return;
        DescribedMessage::Fields fields;
        const auto flags = scan_number(takeWord(rest));
        if (!flags || rest.size() < 2 || rest.front() != '"' || rest.back() != '"') {
            problem_ = "expected flags and a descriptor in quotes";
            return;
        }
        fields.flags = static_cast<uint32_t>(*flags);
        fields.format = rest.substr(1, rest.size() - 2);
        if (const Result parsed = descriptor_Parse(fields.format, fields.descriptor); !parsed)
            problem_ = parsed.text();
        message.fields = std::move(fields);
    }

    static void numberMessages(DescribedService& service) {
        for (DescribedSide& side : service.sides)
            for (DescribedMessage& message : side.receives)
                message.number = static_cast<uint32_t>(
                    std::count_if(side.receives.begin(), side.receives.end(),
                                  [&](const DescribedMessage& other) { return other.name < message.name; }));
    }

    std::string file_;
    std::vector<DescribedService>& services_;
    DescribedSide* receiver_ = nullptr;
    size_t number_ = 0;
    std::string problem_;
};

}  // namespace

Result description_Parse(const std::string& file, std::string_view text,
                         std::vector<DescribedService>& services) {
    return Parser(file, services).parse(text);
}
