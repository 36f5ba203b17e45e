// The results of checks as build servers read them.
#include "chronoweave/engine/rules.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

// Text of an attribute or element: valid UTF-8 with no character that XML does not know.
std::string escaped(const std::string& bytes) {
    std::string text;
    for (const char c : text_utf8(bytes)) {
        switch (c) {
            case '&':
                text += "&amp;";
                break;
            case '<':
                text += "&lt;";
                break;
            case '>':
                text += "&gt;";
                break;
            case '"':
                text += "&quot;";
                break;
            default:
                text += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
        }
    }
    // Two characters of three bytes that XML forbids.
    for (const char* forbidden : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"})
        for (size_t at = 0; (at = text.find(forbidden, at)) != std::string::npos;)
            text.replace(at, 3, "\xEF\xBF\xBD");
    return text;
}

}  // namespace

std::string rules_JUnit(const std::string& suite, const std::vector<TimingRule>& rules,
                        const std::vector<RuleOutcome>& outcomes) {
    size_t failures = 0;
    std::string cases;
    for (size_t i = 0; i < rules.size() && i < outcomes.size(); ++i) {
        const std::string message = escaped(outcomes[i].message);
        cases += "    <testcase classname=\"" + escaped(suite) + "\" name=\"" +
                 gen_format("line %zu: ", rules[i].line) + escaped(rules[i].text) + "\">\n";
        if (outcomes[i].passed) {
            cases += "      <system-out>" + message + "</system-out>\n";
        } else {
            ++failures;
            cases += "      <failure message=\"" + message + "\"/>\n";
        }
        cases += "    </testcase>\n";
    }
    const std::string counts =
        gen_format(" tests=\"%zu\" failures=\"%zu\" errors=\"0\"", rules.size(), failures);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts + ">\n  <testsuite name=\"" +
           escaped(suite) + '"' + counts + ">\n" + cases + "  </testsuite>\n</testsuites>\n";
}
