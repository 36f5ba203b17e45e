#include "windlib/config/attribute_reader.h"

#include <algorithm>
#include <limits>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/text.h"

namespace {

// Bounds for files that include each other over and over, for blocks in blocks, and for what is told of a
// file that is something else.
constexpr size_t mostFiles = 1000;
constexpr size_t mostBytes = size_t{64} << 20;
constexpr size_t mostDepth = 200;
constexpr size_t mostFaults = 100;

constexpr const char* falseWords[] = {"false", "no", "off"};
constexpr const char* trueWords[] = {"true", "yes", "on"};

bool is_blank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Where the quoted text that begins at from ends, behind its closing quote; npos when it doesn't.
size_t quote_end(std::string_view text, size_t from) {
    for (size_t at = from + 1; at < text.size(); ++at) {
        if (text[at] == '\\')
            ++at;
        else if (text[at] == '"')
            return at + 1;
    }
    return std::string_view::npos;
}

// How many more "{" than "}" the text has outside of quotes, and no less than -before.
int braces(std::string_view text, int before) {
    int balance = before;
    if (text_trim(text).starts_with(';')) return balance;
    for (size_t at = 0; at < text.size() && balance > 0; ++at) {
        if (text[at] == '"') at = std::min(quote_end(text, at), text.size()) - 1;
        if (text[at] == '{') ++balance;
        if (text[at] == '}') --balance;
    }
    return balance;
}

template <size_t count>
bool is_one_of(std::string_view word, const char* const (&words)[count]) {
    return std::find(words, words + count, word) != words + count;
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

bool attribute_IsNameCharacter(char c) {
    return !is_blank(c) && static_cast<unsigned char>(c) > ' ' && c != 0x7F &&
           std::string_view(".{}=+;,\"").find(c) == std::string_view::npos;
}

AttributeReader::AttributeReader(AttributeStore& store)
    : store_(store), preprocessor_('%', &store.Macros(), *this), block_(&store.Root()) {}

bool AttributeReader::Read(const std::string& path, std::string text) {
    Open(path, std::move(text));
    while (NextLine())
        while (!stopped_ && Statement()) {
        }
    if (!stopped_ && depth_ != 0) Fault("unexpected end of file");
    for (; block_; block_ = block_->parent()) block_->open_block = false;
    return faults_ == 0;
}

void AttributeReader::Open(const std::string& path, std::string text) {
    outerLines_.push_back(line_);
    auto source = std::make_unique<Source>();
    source->path = path;
    source->text = std::move(text);
    source->rest = source->text;
    sources_.push_back(std::move(source));
    file_ = path;
    line_ = 0;
    preprocessor_.EnterFile();
}

void AttributeReader::Close() {
    if (!preprocessor_.LeaveFile()) Fault("unexpected end of file");
    sources_.pop_back();
    // The place of the last line stays for what is found missing at the end of everything.
    if (!sources_.empty()) {
        file_ = sources_.back()->path;
        line_ = outerLines_.back();
    }
    outerLines_.pop_back();
}

// Goes to the next line that is no directive and not skipped. False at the end or when reading stops.
bool AttributeReader::NextLine() {
    text_ = {};
    at_ = 0;
    while (!stopped_ && !sources_.empty()) {
        Source& source = *sources_.back();
        if (!text_next_line(source.rest, text_)) {
            Close();
            continue;
        }
        ++line_;
        preprocessor_.HandleLine(text_);
        if (!preprocessor_.WasDirective() && !preprocessor_.IsSkipping()) return !stopped_;
    }
    text_ = {};
    return false;
}

bool AttributeReader::OnlyBlanksFollow() const {
    return std::all_of(sources_.begin(), sources_.end(),
                       [](const auto& source) { return text_trim(source->rest).empty(); });
}

bool AttributeReader::include(const std::string& path) {
    if (store_.Options().fileHook && !store_.Options().fileHook(path)) return true;
    std::string text;
    if (++files_ > mostFiles || !file_read_whole(path, text)) return false;
    bytes_ += text.size();
    if (bytes_ > mostBytes) return false;
    Open(path, std::move(text));
    return true;
}

void AttributeReader::message(ReportLevel level, const std::string& text) {
    if (level == ReportLevel::Warning) {
        gen_warning("%s", text.c_str());
    } else {
        gen_error("%s", text.c_str());
        CountFault();
    }
}

void AttributeReader::print(const std::string& text) {
    gen_plain("%s", text.c_str());
}

void AttributeReader::CountFault() {
    ++faults_;
    stopped_ = stopped_ || !store_.Options().goOnAfterErrors || faults_ >= mostFaults;
}

// Reports; always false.
bool AttributeReader::Fault(const std::string& text) {
    gen_error("%s: parse error: %s", preprocessor_.location().c_str(), text.c_str());
    CountFault();
    return false;
}

// Leaves out what belongs to a faulty statement: the rest of its line, the lines of a list that goes on, and
// the block or list that it opens at the end of the line.
void AttributeReader::SkipStatement() {
    // The present line is always looked at anew: the text of the one before may be gone.
    while (text_trim(text_).ends_with("...") && NextLine()) {
    }
    if (!text_trim(text_).ends_with('{')) return;
    for (int open = 1; open > 0 && NextLine();) open = braces(text_, open);
}

void AttributeReader::SkipBlanks() {
    while (!AtEnd() && is_blank(text_[at_])) ++at_;
}

bool AttributeReader::Take(std::string_view token) {
    if (!text_.substr(at_).starts_with(token)) return false;
    at_ += token.size();
    return true;
}

// One statement of the present line; false when the line is done with.
bool AttributeReader::Statement() {
    SkipBlanks();
    if (AtEnd() || Peek() == ';') return false;
    bool good = true;
    if (Take("}")) {
        good = CloseBlock();
    } else {
        std::vector<std::string> path;
        for (bool more = true; good && more;) {
            SkipBlanks();
            path.emplace_back();
            good = Name(path.back()) && Operator(path, more);
        }
    }
    if (!good && !stopped_) SkipStatement();
    return good;
}

bool AttributeReader::Name(std::string& name) {
    if (Peek() == '"') {
        if (!Quoted(name)) return false;
    } else {
        const size_t from = at_;
        while (!AtEnd() && attribute_IsNameCharacter(text_[at_])) ++at_;
        name = text_.substr(from, at_ - from);
        const bool isOperator = AtEnd() || std::string_view(".{}=+").find(Peek()) != std::string_view::npos;
        if (name.empty() && !isOperator) return true;  // the operator's fault
    }
    return !name.empty() || Fault("empty attribute name");
}

bool AttributeReader::Operator(std::vector<std::string>& path, bool& more) {
    SkipBlanks();
    more = false;
    if (AtEnd()) return Fault(OnlyBlanksFollow() ? "unexpected end of file" : "unexpected end of line");
    if (Take(".")) return more = true;
    if (Take("{")) return OpenBlock(path);
    if (Take("+=")) return Assign(path, true);
    if (Take("=")) return Assign(path, false);
    const char second = at_ + 1 < text_.size() ? text_[at_ + 1] : ' ';
    return Fault(gen_format("unknown operator sequence \"%c%c\" ", Peek(), second));
}

AttributeNode& AttributeReader::NodeAt(const std::vector<std::string>& path) {
    AttributeNode* node = block_;
    for (size_t i = 0; i + 1 < path.size(); ++i) node = &node->MakeChild(path[i]);
    return *node;
}

bool AttributeReader::OpenBlock(const std::vector<std::string>& path) {
    if (depth_ + path.size() > mostDepth) return Fault("blocks are nested too deeply");
    block_ = &NodeAt(path).MakeChild(path.back());
    block_->open_block = true;
    depth_ += path.size();
    return true;
}

bool AttributeReader::CloseBlock() {
    if (depth_ == 0) return Fault("unexpected '}'");
    block_->open_block = false;
    do {
        block_ = block_->parent();
        --depth_;
    } while (block_->parent() && !block_->open_block);
    return true;
}

bool AttributeReader::Assign(const std::vector<std::string>& path, bool add) {
    if (depth_ + path.size() > mostDepth) return Fault("blocks are nested too deeply");
    const int line = line_;
    AttributeValue value;
    if (!Value(value)) return false;
    AttributeNode& node = NodeAt(path);
    Attribute* attribute = add ? node.Add(path.back(), value) : &node.Set(path.back(), std::move(value));
    if (!attribute) return Fault("the list has items of another kind");
    attribute->file = file_;
    attribute->line = line;
    return true;
}

bool AttributeReader::Value(AttributeValue& value) {
    SkipBlanks();
    return Take("{") ? List(value) : Item(value);
}

bool AttributeReader::List(AttributeValue& value) {
    std::vector<std::string> texts;
    std::vector<int64_t> numbers;
    for (bool first = true;; first = false) {
        SkipBlanks();
        while (!AtEnd() && text_trim(text_.substr(at_)) == "...") {
            if (!NextLine()) return !stopped_ && Fault("unexpected end of file");
            SkipBlanks();
        }
        if (AtEnd()) return Fault("unexpected end of line");
        if (first && Take("}")) break;
        AttributeValue item;
        if (!Item(item)) return false;
        if (item.index() == 0 ? !numbers.empty() : !texts.empty())
            return Fault("the list has items of another kind");
        if (item.index() == 0)
            texts.push_back(std::move(std::get<std::string>(item)));
        else
            numbers.push_back(std::get<int64_t>(item));
        SkipBlanks();
        if (Take("}")) break;
        if (!Take(",")) return Fault("expected '}'");
    }
    if (numbers.empty())
        value = std::move(texts);
    else
        value = std::move(numbers);
    return true;
}

bool AttributeReader::Item(AttributeValue& value) {
    if (Peek() == '"') {
        std::string text;
        if (!Quoted(text)) return false;
        value = std::move(text);
        return true;
    }
    const bool negative = Take("-");
    if (negative) SkipBlanks();
    const size_t from = at_;
    while (!AtEnd() && !is_blank(text_[at_]) &&
           std::string_view("{},;\"").find(text_[at_]) == std::string_view::npos)
        ++at_;
    const std::string_view word = text_.substr(from, at_ - from);
    if (word.empty()) return Fault("empty attribute value");
    return negative || is_digit(word.front()) ? Number(word, negative, value) : Word(word, value);
}

bool AttributeReader::Word(std::string_view word, AttributeValue& value) {
    if (store_.Options().wordsAreTexts)
        value = std::string(word);
    else if (is_one_of(word, falseWords))
        value = int64_t{0};
    else if (is_one_of(word, trueWords))
        value = int64_t{1};
    else
        return Fault(gen_format("illegal attribute value \"%s\"", std::string(word).c_str()));
    return true;
}

bool AttributeReader::Number(std::string_view word, bool negative, AttributeValue& value) {
    const std::string whole(word);
    unsigned shift = 0;
    if (store_.Options().sizeSuffixes) {
        const char last = text_lower(word.back());
        shift = last == 'k' ? 10 : last == 'm' ? 20 : 0;
        if (shift != 0) word.remove_suffix(1);
    }
    const bool number = !word.empty() && is_digit(word.front());
    const std::optional<uint64_t> read = number ? scan_number(word) : std::nullopt;
    if (!read) return Fault(gen_format("illegal attribute value \"%s\"", whole.c_str()));
    const uint64_t most = (uint64_t{1} << 63) - (negative ? 0 : 1);
    if (*read > most >> shift) return Fault(gen_format("number out of range \"%s\"", whole.c_str()));
    const uint64_t scaled = *read << shift;
    value = static_cast<int64_t>(negative ? 0 - scaled : scaled);
    return true;
}

bool AttributeReader::Quoted(std::string& text) {
    const size_t end = quote_end(text_, at_);
    if (end == std::string_view::npos) {
        at_ = text_.size();
        return Fault("unexpected end of line");
    }
    text = text_unquote(text_.substr(at_, end - at_));
    at_ = end;
    return true;
}

// Reading is a part of the store that needs its reader; the store itself knows none.
bool AttributeStore::read_from_file(const std::string& path) {
    if (options_.fileHook && !options_.fileHook(path)) return true;
    std::string text;
    const Result whole = file_read_whole(path, text);
    if (whole) return ReadText(path, text);
    gen_error("could not open \"%s\": %s", path.c_str(), whole.reason().c_str());
    return false;
}

bool AttributeStore::ReadText(const std::string& path, std::string_view text) {
    return AttributeReader(*this).Read(path, std::string(text));
}
