// Between structures and bodies: a structure names its fields once, and is written as text or binary, read
// from either, and shown in logs.
//
//     struct Request {
//         std::string file;
//         uint32_t win = 0;
//         template <class Visitor, class Self>
//         static void visit(Visitor& v, Self& self) {
//             v.template field<STPType::String>("file", 1, self.file);
//             v.template field<STPType::Number>("win", 2, self.win);
//         }
//     };
//
// A vector's elements are given by array, and its number of elements, where a field of its own holds that, by
// count. A string that is missing or null reads as an empty one.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "shared/stp_transport/spec/binary_body.h"
#include "shared/stp_transport/spec/descriptor.h"
#include "shared/stp_transport/spec/text_body.h"

enum class STPBodyForm { Text, Binary };

// File names travel in the form of the host that sends them, which is this one's own.
inline std::string_view stp_FileNameToWire(std::string_view name) {
    return name;
}
inline std::string stp_FileNameFromWire(std::string name) {
    return name;
}

constexpr bool stp_IsText(STPType type) {
    return type == STPType::String || type == STPType::FileName || type == STPType::Word;
}
constexpr bool stp_IsReal(STPType type) {
    return type == STPType::F4 || type == STPType::F8;
}
constexpr int stp_BytesOf(STPType type) {
    switch (type) {
        case STPType::U1:
            return 1;
        case STPType::U2:
            return 2;
        case STPType::Number:
        case STPType::U4:
        case STPType::F4:
            return 4;
        case STPType::Number64:
        case STPType::U8:
        case STPType::F8:
            return 8;
        case STPType::String:
        case STPType::FileName:
        case STPType::Word:
        case STPType::Record:
        case STPType::Array:
            break;
    }
    return 0;
}

class TextFieldsWriter {
  public:
    explicit TextFieldsWriter(std::string& body) : writer_(body) {}
    template <STPType type, class Value>
    void field(std::string_view key, uint32_t, const Value& value) {
        if constexpr (type == STPType::Record) {
            writer_.beginRecord(key);
            Value::visit(*this, value);
            writer_.endRecord();
        } else if constexpr (type == STPType::Word) {
            writer_.word(key, value);
        } else if constexpr (type == STPType::FileName) {
            writer_.string(key, stp_FileNameToWire(value));
        } else if constexpr (type == STPType::String) {
            writer_.string(key, value);
        } else if constexpr (stp_IsReal(type)) {
            writer_.real(key, value);
        } else if constexpr (stp_BytesOf(type) == 8) {
            writer_.number64(key, value);
        } else {
            writer_.number(key, value);
        }
    }
    template <STPType type, class Value>
    void array(std::string_view key, uint32_t, const std::vector<Value>& values) {
        writer_.beginArray(key, values.size());
        for (const Value& value : values) field<type>({}, 0, value);
        writer_.endArray();
    }
    template <STPType type, class Value>
    void count(std::string_view key, uint32_t, const std::vector<Value>& values) {
        writer_.number(key, static_cast<uint32_t>(values.size()));
    }

  private:
    TextBodyWriter writer_;
};

class TextFieldsReader {
  public:
    explicit TextFieldsReader(TextBodyReader reader) : reader_(std::move(reader)) {}
    template <STPType type, class Value>
    void field(std::string_view key, uint32_t, Value& value) {
        read<type>(reader_.find(key).value_or(""), value);
    }
    template <STPType type, class Value>
    void array(std::string_view key, uint32_t, std::vector<Value>& values) {
        for (const std::string_view element : reader_.array(key)) read<type>(element, values.emplace_back());
    }
    template <STPType type, class Value>
    void count(std::string_view, uint32_t, std::vector<Value>&) {}

  private:
    template <STPType type, class Value>
    static void read(std::string_view text, Value& value) {
        if constexpr (type == STPType::Record) {
            TextFieldsReader nested(TextBodyReader::record(text));
            Value::visit(nested, value);
        } else if constexpr (type == STPType::Word) {
            value = std::string(text);
        } else if constexpr (stp_IsText(type)) {
            value = textBody_String(text).value_or("");
            if constexpr (type == STPType::FileName) value = stp_FileNameFromWire(std::move(value));
        } else if constexpr (stp_IsReal(type)) {
            value = static_cast<Value>(textBody_Real(text));
        } else {
            value = static_cast<Value>(textBody_Number(text));
        }
    }
    TextBodyReader reader_;
};

class BinaryFieldsWriter {
  public:
    explicit BinaryFieldsWriter(std::string& body) : writer_(body) {}
    template <STPType type, class Value>
    void field(std::string_view, uint32_t number, const Value& value) {
        if constexpr (type == STPType::Record) {
            writer_.beginRecord(number);
            Value::visit(*this, value);
            writer_.endRecord();
        } else if constexpr (stp_IsText(type)) {
            writer_.string(number, type == STPType::FileName ? stp_FileNameToWire(value) : value);
        } else if constexpr (stp_IsReal(type)) {
            writer_.real(number, stp_BytesOf(type), value);
        } else {
            writer_.integer(number, stp_BytesOf(type), value);
        }
    }
    template <STPType type, class Value>
    void array(std::string_view, uint32_t number, const std::vector<Value>& values) {
        writer_.beginArray(number);
        for (const Value& value : values) element<type>(value);
        writer_.endArray();
    }
    template <STPType type, class Value>
    void count(std::string_view, uint32_t number, const std::vector<Value>& values) {
        writer_.integer(number, stp_BytesOf(type), values.size());
    }

  private:
    template <STPType type, class Value>
    void element(const Value& value) {
        if constexpr (type == STPType::Record) {
            writer_.beginRecordElement();
            Value::visit(*this, value);
            writer_.endRecordElement();
        } else if constexpr (stp_IsText(type)) {
            writer_.stringElement(type == STPType::FileName ? stp_FileNameToWire(value) : value);
        } else if constexpr (stp_IsReal(type)) {
            writer_.realElement(stp_BytesOf(type), value);
        } else {
            writer_.integerElement(stp_BytesOf(type), value);
        }
    }
    BinaryBodyWriter writer_;
};

class BinaryFieldsReader {
  public:
    explicit BinaryFieldsReader(BinaryBodyReader reader) : reader_(reader) {}
    template <STPType type, class Value>
    void field(std::string_view, uint32_t number, Value& value) {
        if constexpr (type == STPType::Record) {
            BinaryFieldsReader nested{BinaryBodyReader(reader_.record(number))};
            Value::visit(nested, value);
        } else if constexpr (stp_IsText(type)) {
            value = reader_.string(number).value_or("");
            if constexpr (type == STPType::FileName) value = stp_FileNameFromWire(std::move(value));
        } else if constexpr (stp_IsReal(type)) {
            value = static_cast<Value>(reader_.real(number));
        } else {
            value = static_cast<Value>(reader_.integer(number));
        }
    }
    // As many elements as there are, and no more than the count says.
    template <STPType type, class Value>
    void array(std::string_view, uint32_t number, std::vector<Value>& values) {
        BinaryElements elements = reader_.array(number);
        while (!elements.atEnd() && values.size() < most_) element<type>(elements, values.emplace_back());
        most_ = stpMostElements;
    }
    template <STPType type, class Value>
    void count(std::string_view, uint32_t number, std::vector<Value>&) {
        most_ = std::min(static_cast<size_t>(reader_.integer(number)), stpMostElements);
    }

  private:
    template <STPType type, class Value>
    static void element(BinaryElements& elements, Value& value) {
        if constexpr (type == STPType::Record) {
            BinaryFieldsReader nested{BinaryBodyReader(elements.record())};
            Value::visit(nested, value);
        } else if constexpr (stp_IsText(type)) {
            value = elements.string().value_or("");
            if constexpr (type == STPType::FileName) value = stp_FileNameFromWire(std::move(value));
        } else if constexpr (stp_IsReal(type)) {
            value = static_cast<Value>(elements.real(stp_BytesOf(type)));
        } else {
            value = static_cast<Value>(elements.integer(stp_BytesOf(type)));
        }
    }
    BinaryBodyReader reader_;
    size_t most_ = stpMostElements;  // of the next array
};

// The fields in the text form, as logs show them and text bodies have them.
template <class Fields>
std::string stp_FieldsAsText(const Fields& fields) {
    std::string text;
    TextFieldsWriter writer(text);
    Fields::visit(writer, fields);
    return text;
}

// The body of a message; a text request begins with its name.
template <class Fields>
std::string stp_WriteBody(STPBodyForm form, std::string_view name, const Fields& fields) {
    std::string body;
    if (form == STPBodyForm::Text) {
        if (!name.empty()) body = std::string(name) + ' ';
        return body + stp_FieldsAsText(fields);
    }
    BinaryFieldsWriter writer(body);
    Fields::visit(writer, fields);
    return body;
}

template <class Fields>
Fields stp_ReadBody(STPBodyForm form, std::string_view body) {
    Fields fields;
    if (form == STPBodyForm::Text) {
        TextFieldsReader reader{TextBodyReader(body)};
        Fields::visit(reader, fields);
    } else {
        BinaryFieldsReader reader{BinaryBodyReader(body)};
        Fields::visit(reader, fields);
    }
    return fields;
}
