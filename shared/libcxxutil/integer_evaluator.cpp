#include "shared/libcxxutil/integer_evaluator.h"

#include <array>
#include <limits>
#include <optional>
#include <utility>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int mostNesting = 200;  // keeps a text of nothing but brackets from the end of the stack

struct Operator {
    const char* text;
    int level;  // the higher, the closer it binds
};
// Those of two characters stand before those they begin with.
constexpr std::array<Operator, 18> operators{{{"||", 0},
                                              {"&&", 1},
                                              {"==", 5},
                                              {"!=", 5},
                                              {"<<", 7},
                                              {">>", 7},
                                              {"<=", 6},
                                              {">=", 6},
                                              {"<", 6},
                                              {">", 6},
                                              {"|", 2},
                                              {"^", 3},
                                              {"&", 4},
                                              {"+", 8},
                                              {"-", 8},
                                              {"*", 9},
                                              {"/", 9},
                                              {"%", 9}}};
constexpr int highestLevel = 9;

int64_t wrapped(uint64_t value) {
    return static_cast<int64_t>(value);
}

std::optional<int64_t> divide(int64_t a, int64_t b, bool rest) {
    if (b == 0) return std::nullopt;
    if (b == -1) return rest ? 0 : wrapped(0 - static_cast<uint64_t>(a));
    return rest ? a % b : a / b;
}

std::optional<int64_t> shift(int64_t a, int64_t b, bool left) {
    if (b < 0 || b > 63) return std::nullopt;
    return left ? wrapped(static_cast<uint64_t>(a) << b) : a >> b;
}

// All but || and &&, which the parser answers itself.
std::optional<int64_t> apply(std::string_view op, int64_t a, int64_t b) {
    const auto ua = static_cast<uint64_t>(a), ub = static_cast<uint64_t>(b);
    if (op == "==") return a == b;
    if (op == "!=") return a != b;
    if (op == "<=") return a <= b;
    if (op == ">=") return a >= b;
    if (op == "<<" || op == ">>") return shift(a, b, op == "<<");
    switch (op[0]) {
        case '<':
            return a < b;
        case '>':
            return a > b;
        case '|':
            return a | b;
        case '^':
            return a ^ b;
        case '&':
            return a & b;
        case '+':
            return wrapped(ua + ub);
        case '-':
            return wrapped(ua - ub);
        case '*':
            return wrapped(ua * ub);
        default:
            return divide(a, b, op[0] == '%');
    }
}

class Parser {
  public:
    Parser(std::string_view text, ut_simple_integer_evaluator_client_interface& client)
        : rest_(text), client_(client) {}

    Result Run(int64_t& value) {
        value = Conditional(true);
        SkipBlanks();
        if (failure_.ok() && !rest_.empty()) Fail();
        if (!failure_.ok()) value = 0;
        return failure_;
    }

  private:
    struct Nested {
        explicit Nested(Parser& parser) : parser_(parser) {
            if (++parser_.client_.evaluation_depth > mostNesting) parser_.Fail();
        }
        ~Nested() { --parser_.client_.evaluation_depth; }
        Parser& parser_;
    };

    bool failed() const { return !failure_.ok(); }
    int64_t Fail() {
        return Fail(Result::failure(gen_format("parse error: near: \"%s\"", std::string(rest_).c_str())));
    }
    int64_t Fail(Result failure) {
        failure_ = result_First(failure_, std::move(failure));
        return 0;
    }
    void SkipBlanks() {
        while (!rest_.empty() && (rest_.front() == ' ' || rest_.front() == '\t')) rest_.remove_prefix(1);
    }
    bool Take(std::string_view token) {
        SkipBlanks();
        if (!rest_.starts_with(token)) return false;
        rest_.remove_prefix(token.size());
        return true;
    }
    std::string_view TakeWord() {
        size_t length = 0;
        while (length < rest_.size() && is_identifier_character(rest_[length])) ++length;
        const std::string_view word = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return word;
    }

    int64_t Conditional(bool live) {
        const Nested nested(*this);
        const int64_t condition = Binary(0, live);
        if (failed() || !Take("?")) return condition;
        const int64_t yes = Conditional(live && condition != 0);
        if (failed()) return 0;
        if (!Take(":")) return Fail();
        const int64_t no = Conditional(live && condition == 0);
        return condition != 0 ? yes : no;
    }

    // The operator of this level that stands next, not taken; empty when there is none.
    std::string_view Next(int level) {
        SkipBlanks();
        for (const Operator& each : operators)
            if (rest_.starts_with(each.text)) return each.level == level ? each.text : std::string_view{};
        return {};
    }

    int64_t Binary(int level, bool live) {
        if (level > highestLevel) return Unary(live);
        int64_t left = Binary(level + 1, live);
        while (!failed()) {
            const std::string_view op = Next(level);
            if (op.empty()) break;
            const std::string_view from = rest_;
            rest_.remove_prefix(op.size());
            const bool logical = level <= 1;
            const bool decided = logical && (left != 0) == (level == 0);
            const int64_t right = Binary(level + 1, live && !decided);
            if (failed()) return 0;
            if (logical) {
                left = decided ? left != 0 : right != 0;
            } else if (live) {
                const std::optional<int64_t> result = apply(op, left, right);
                if (!result) rest_ = from;
                left = result ? *result : Fail();
            }
        }
        return left;
    }

    int64_t Unary(bool live) {
        const Nested nested(*this);
        if (failed()) return 0;
        if (Take("!")) return Unary(live) == 0;
        if (Take("~")) return ~Unary(live);
        if (Take("+")) return Unary(live);
        if (Take("-")) return wrapped(0 - static_cast<uint64_t>(Unary(live)));
        return Primary(live);
    }

    int64_t Primary(bool live) {
        if (Take("(")) {
            const int64_t value = Conditional(live);
            return failed() || Take(")") ? value : Fail();
        }
        const std::string_view from = rest_;
        const bool braced = Take("${");
        const std::string_view word = TakeWord();
        if (word.empty() || (braced && !Take("}"))) {
            rest_ = from;
            return Fail();
        }
        if (!braced && word[0] >= '0' && word[0] <= '9') {
            const std::optional<uint64_t> number = scan_number(word);
            if (!number) rest_ = from;
            return number ? wrapped(*number) : Fail();
        }
        if (!braced && Take("(")) return Call(word, live);
        int64_t value = 0;
        Result known = live ? client_.EvaluateName(word, value) : Result();
        return known ? value : Fail(std::move(known));
    }

    // Reads the arguments behind the opening bracket as they stand.
    int64_t Call(std::string_view name, bool live) {
        std::vector<std::string_view> arguments;
        size_t from = 0, at = 0;
        int open = 0;
        bool quoted = false;
        for (; at < rest_.size(); ++at) {
            const char c = rest_[at];
            if (quoted && c == '\\') ++at;
            if (c == '"') quoted = !quoted;
            if (quoted) continue;
            if (c == '(') ++open;
            if (c == ')' && open-- == 0) break;
            if (c != ',' || open != 0) continue;
            arguments.push_back(text_trim(rest_.substr(from, at - from)));
            from = at + 1;
        }
        if (at >= rest_.size()) return Fail();
        const std::string_view last = text_trim(rest_.substr(from, at - from));
        if (!last.empty() || !arguments.empty()) arguments.push_back(last);
        rest_.remove_prefix(at + 1);
        int64_t value = 0;
        Result known = live ? client_.EvaluateFunction(name, arguments, value) : Result();
        return known ? value : Fail(std::move(known));
    }

    std::string_view rest_;
    ut_simple_integer_evaluator_client_interface& client_;
    Result failure_;  // the first
};

}  // namespace

bool is_identifier_character(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

Result evaluate_integer(std::string_view text, ut_simple_integer_evaluator_client_interface& client,
                        int64_t& value) {
    return Parser(text, client).Run(value);
}
