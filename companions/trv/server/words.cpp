#include "companions/trv/server/words.h"

#include "shared/libcxxutil/text.h"

namespace {

// One word off the text; false when a quote in it is not closed.
bool take(std::string_view& text, std::string& word) {
    text = text_trim(text);
    bool isQuoted = false;
    size_t at = 0;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (!isQuoted && (c == ' ' || c == '\t')) break;
        const bool isEscape =
            isQuoted && c == '\\' && at + 1 < text.size() && (text[at + 1] == '"' || text[at + 1] == '\\');
        if (isEscape)
            word += text[++at];
        else if (c == '"')
            isQuoted = !isQuoted;
        else
            word += c;
    }
    text = text_trim(text.substr(at));
    return !isQuoted;
}

}  // namespace

std::string words_TakeFirst(std::string_view& text) {
    std::string word;
    take(text, word);
    return word;
}

Result words_Split(std::string_view text, std::vector<std::string>& words) {
    for (text = text_trim(text); !text.empty();) {
        std::string word;
        if (!take(text, word)) return Result::failure("a double quote is not closed");
        words.push_back(std::move(word));
    }
    return {};
}
