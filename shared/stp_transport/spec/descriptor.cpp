#include "shared/stp_transport/spec/descriptor.h"

#include <algorithm>
#include <iterator>

#include "shared/libcxxutil/report.h"

namespace {

struct Spelling {
    std::string_view text;
    STPType type;
};
constexpr Spelling spellings[] = {
    {"%num%", STPType::Number},  {"%num8%", STPType::Number64}, {"%u1%", STPType::U1},
    {"%u2%", STPType::U2},       {"%u4%", STPType::U4},         {"%u8%", STPType::U8},
    {"%f4%", STPType::F4},       {"%f8%", STPType::F8},         {"%str%", STPType::String},
    {"%fn%", STPType::FileName}, {"%word%", STPType::Word}};

bool isNameLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool isNumber(STPType type) {
    return type == STPType::Number || (type >= STPType::U1 && type <= STPType::U4);
}

class Parser {
  public:
    explicit Parser(std::string_view text) : text_(text) {}

    Result message(STPMessageDescriptor& descriptor) {
        fields(descriptor.request);
        if (accept("|")) fields(descriptor.reply);
        if (problem_.empty() && at_ < text_.size()) expected("a field");
        if (problem_.empty()) return {};
        return Result::failure(problem_, gen_format("character %zu", at_ + 1));
    }

  private:
    void expected(const char* what) {
        if (problem_.empty()) problem_ = std::string("expected ") + what;
    }
    void skipBlanks() {
        while (at_ < text_.size() && text_[at_] == ' ') ++at_;
    }
    bool accept(std::string_view what) {
        skipBlanks();
        if (!text_.substr(at_).starts_with(what)) return false;
        at_ += what.size();
        return true;
    }
    void require(std::string_view what) {
        if (!accept(what)) expected(("\"" + std::string(what) + "\"").c_str());
    }
    std::string name() {
        skipBlanks();
        const size_t start = at_;
        while (at_ < text_.size() && isNameLetter(text_[at_])) ++at_;
        if (at_ == start) expected("a name");
        return std::string(text_.substr(start, at_ - start));
    }
    bool atName() {
        skipBlanks();
        return at_ < text_.size() && isNameLetter(text_[at_]);
    }

    void fields(std::vector<STPField>& list) {
        if (++depth_ > descriptorMostDepth) expected("no deeper nesting");
        while (problem_.empty() && atName()) {
            STPField field{name(), {}};
            require(":");
            if (problem_.empty()) type(field.type, list);
            const bool twice = std::any_of(list.begin(), list.end(),
                                           [&](const STPField& other) { return other.name == field.name; });
            if (twice) expected("another name: this one stands already");
            list.push_back(std::move(field));
        }
        --depth_;
    }

    void element(STPDescribed& described) {
        described.element.emplace_back();
        if (++depth_ > descriptorMostDepth) expected("no deeper nesting");
        if (problem_.empty()) type(described.element.front(), {});
        --depth_;
    }

    void count(STPDescribed& described, const std::vector<STPField>& before) {
        described.count = name();
        const bool known = std::any_of(before.begin(), before.end(), [&](const STPField& field) {
            return field.name == described.count && isNumber(field.type.type);
        });
        if (!known) expected("a count that is an earlier number of the record");
    }

    void type(STPDescribed& described, const std::vector<STPField>& before) {
        for (const Spelling& spelling : spellings)
            if (accept(spelling.text)) {
                described.type = spelling.type;
                return;
            }
        described.type = STPType::Array;
        if (accept("{")) {
            described.type = STPType::Record;
            fields(described.fields);
            require("}");
        } else if (accept("[")) {
            element(described);
            require("]");
        } else if (accept("*(")) {
            count(described, before);
            require(")");
            require("[");
            element(described);
            require("]");
        } else if (accept("%dar%(")) {
            described.dynamic = true;
            count(described, before);
            require(",");
            element(described);
            require(")");
        } else {
            expected("a type");
        }
    }

    std::string_view text_;
    size_t at_ = 0;
    int depth_ = 0;
    std::string problem_;
};

void write(std::string& text, const std::vector<STPField>& fields);

void write(std::string& text, const STPDescribed& described) {
    if (described.type == STPType::Record) {
        text += '{';
        write(text, described.fields);
        text += '}';
    } else if (described.type == STPType::Array) {
        if (described.dynamic)
            text += "%dar%(" + described.count + ", ";
        else
            text += described.count.empty() ? "[" : "*(" + described.count + ")[";
        write(text, described.element.front());
        text += described.dynamic ? ')' : ']';
    } else {
        text += std::find_if(std::begin(spellings), std::end(spellings), [&](const Spelling& spelling) {
                    return spelling.type == described.type;
                })->text;
    }
}

void write(std::string& text, const std::vector<STPField>& fields) {
    for (const STPField& field : fields) {
        text += field.name + ':';
        write(text, field.type);
        text += ' ';
    }
}

}  // namespace

// By hand: the two hold each other, and some compilers break down over defaulted comparisons of such.
bool STPField::operator==(const STPField& other) const {
    return name == other.name && type == other.type;
}

bool STPDescribed::operator==(const STPDescribed& other) const {
    return type == other.type && fields == other.fields && element == other.element && count == other.count &&
           dynamic == other.dynamic;
}

Result descriptor_Parse(std::string_view text, STPMessageDescriptor& descriptor) {
    descriptor = {};
    return Parser(text).message(descriptor);
}

std::string descriptor_Text(const STPMessageDescriptor& descriptor) {
    std::string text;
    write(text, descriptor.request);
    if (!descriptor.reply.empty()) {
        text += "| ";
        write(text, descriptor.reply);
    }
    return text;
}
