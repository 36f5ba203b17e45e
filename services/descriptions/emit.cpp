#include "services/descriptions/emit.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr char notice[] = "// Made from a service description by the build; not to be edited.\n";

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), text_lower);
    return text;
}

// "tra_service_server_impl" of TRA and server.
std::string unitName(const DescribedService& service, const std::string& what) {
    return lower(service.name) + "_service_" + what;
}

const char* typeName(STPType type) {
    switch (type) {
        case STPType::Number:
            return "Number";
        case STPType::Number64:
            return "Number64";
        case STPType::U1:
            return "U1";
        case STPType::U2:
            return "U2";
        case STPType::U4:
            return "U4";
        case STPType::U8:
            return "U8";
        case STPType::F4:
            return "F4";
        case STPType::F8:
            return "F8";
        case STPType::String:
            return "String";
        case STPType::FileName:
            return "FileName";
        case STPType::Word:
            return "Word";
        case STPType::Record:
            return "Record";
        case STPType::Array:
            break;
    }
    return "Array";
}

std::string cppType(const STPField& field, const STPDescribed& type) {
    switch (type.type) {
        case STPType::U1:
            return "uint8_t";
        case STPType::U2:
            return "uint16_t";
        case STPType::Number:
        case STPType::U4:
            return "uint32_t";
        case STPType::Number64:
        case STPType::U8:
            return "uint64_t";
        case STPType::F4:
            return "float";
        case STPType::F8:
            return "double";
        case STPType::String:
        case STPType::FileName:
        case STPType::Word:
            return "std::string";
        case STPType::Record:
            return field.name + "_Record";
        case STPType::Array:
            break;
    }
    return "std::vector<" + cppType(field, type.element.front()) + ">";
}

// The record that a field needs a structure for, if it does.
const STPDescribed* recordOf(const STPDescribed& type) {
    if (type.type == STPType::Record) return &type;
    return type.type == STPType::Array ? recordOf(type.element.front()) : nullptr;
}

// The array whose number of elements a field holds.
const STPField* countedBy(const std::vector<STPField>& fields, const std::string& name) {
    const auto array = std::find_if(fields.begin(), fields.end(), [&](const STPField& field) {
        return field.type.type == STPType::Array && field.type.count == name;
    });
    return array == fields.end() ? nullptr : &*array;
}

std::string visitOf(const std::vector<STPField>& fields, size_t index) {
    const STPField& field = fields[index];
    const STPField* const counted = countedBy(fields, field.name);
    const bool array = field.type.type == STPType::Array;
    const char* const call = counted ? "count" : array ? "array" : "field";
    const char* const type = typeName(array ? field.type.element.front().type : field.type.type);
    const std::string& member = counted ? counted->name : field.name;
    return gen_format("v.template %s<STPType::%s>(\"%s\", %zu, self.%s);\n", call, type, field.name.c_str(),
                      index + 1, member.c_str());
}

std::string structure(const std::string& name, const std::vector<STPField>& fields,
                      const std::string& indent) {
    const std::string inner = indent + "    ";
    std::string text = indent + "struct " + name + " {\n";
    for (const STPField& field : fields) {
        if (const STPDescribed* record = recordOf(field.type))
            text += structure(field.name + "_Record", record->fields, inner);
        if (!countedBy(fields, field.name))
            text += inner + cppType(field, field.type) + ' ' + field.name + "{};\n";
    }
    text += inner + "template <class Visitor, class Self>\n" + inner + "static void visit(" +
            (fields.empty() ? "Visitor&, Self&" : "Visitor& v, Self& self") + ") {\n";
    for (size_t i = 0; i < fields.size(); ++i) text += inner + "    " + visitOf(fields, i);
    return text + inner + "}\n" + indent + "};\n";
}

std::string structureName(const DescribedService& service, const DescribedMessage& message,
                          const char* part) {
    return service.name + "_" + message.name + "_" + part;
}

EmittedFile messages(const DescribedService& service) {
    std::string text = notice;
    text += "// The fields of the messages of " + service.name + ".\n#pragma once\n\n" +
            "#include <cstdint>\n#include <string>\n#include <vector>\n\n" +
            "#include \"shared/stp_transport/spec/body_fields.h\"\n\n";
    for (const DescribedSide& side : service.sides)
        for (const DescribedMessage& message : side.receives) {
            if (!message.fields) continue;
            text +=
                structure(structureName(service, message, "Request"), message.fields->descriptor.request, "");
            if (message.hasReply())
                text +=
                    structure(structureName(service, message, "Reply"), message.fields->descriptor.reply, "");
        }
    return {unitName(service, "messages.h"), std::move(text)};
}

// One side of a service, as its class is made.
struct Side {
    const DescribedService& service;
    const DescribedSide& own;
    const DescribedSide& peer;

    std::string className() const { return service.name + "_" + own.name + "_Impl"; }
    std::string form() const {
        return service.form == STPBodyForm::Text ? "STPBodyForm::Text" : "STPBodyForm::Binary";
    }
    std::string handler() const { return service.form == STPBodyForm::Text ? "handleAscii" : "handleBinary"; }
    std::string request(const DescribedMessage& message) const {
        return structureName(service, message, "Request");
    }
    std::string reply(const DescribedMessage& message) const {
        return structureName(service, message, "Reply");
    }
};

std::string stubSignature(const Side& side, const DescribedMessage& message, const std::string& scope,
                          const char* otherwise) {
    const std::string first = scope + message.name + "(const " + side.request(message) + "& request, ";
    const std::string last =
        std::string("RetryHandler* retry") + otherwise + ", STPStatus* status" + otherwise + ")";
    if (message.hasReply()) return "std::optional<" + side.reply(message) + "> " + first + last;
    const char* const how = *otherwise ? "STPSend how = STPSend::Blocking, " : "STPSend how, ";
    return "bool " + first + how + last;
}

EmittedFile header(const Side& side) {
    std::string text = notice;
    text += "// " + side.service.name + ", side " + side.own.name +
            ".\n#pragma once\n\n#include <optional>\n\n" + "#include \"services/generated/" +
            unitName(side.service, "messages.h") + "\"\n" +
            "#include \"shared/stp_transport/spec/spec_class.h\"\n\n";
    text += "class " + side.className() + " : public STPSpecClass {\n  public:\n";
    text += "    static const STPServiceDescription& serviceDescription();\n\n";
    text += "    // Calls to the peer; nothing, or false, with the reason in the status.\n";
    for (const DescribedMessage& message : side.peer.receives)
        if (message.fields) text += "    " + stubSignature(side, message, "", " = nullptr") + ";\n";
    text += "\n  protected:\n    " + side.className() + "() : STPSpecClass(serviceDescription()) {}\n";
    text += "    void " + side.handler() +
            "(const STPMessage& message, STPMessage* reply, uint32_t number) override;\n\n";
    text += "    // The peer's calls.\n";
    for (const DescribedMessage& message : side.own.receives) {
        if (!message.fields) continue;
        text += "    virtual " + (message.hasReply() ? side.reply(message) : std::string("void")) + ' ' +
                message.name + "(const " + side.request(message) + "& request) = 0;\n";
    }
    text += "};\n";
    return {unitName(side.service, side.own.name + "_impl.h"), std::move(text)};
}

std::string table(const char* name, const DescribedSide& receiver) {
    std::vector<const DescribedMessage*> sorted;
    for (const DescribedMessage& message : receiver.receives) sorted.push_back(&message);
    std::sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) { return a->name < b->name; });
    std::string text = gen_format("constexpr std::array<STPTableRow, %zu> %s{{\n", sorted.size(), name);
    for (const DescribedMessage* message : sorted)
        text += gen_format("    {\"%s\", \"%s\", %u, 0x%02x},\n", message->name.c_str(),
                           message->fields ? message->fields->format.c_str() : "", message->number,
                           message->fields ? message->fields->flags : 0);
    return text + "}};\n";
}

std::string description(const Side& side) {
    return "const STPServiceDescription& " + side.className() + "::serviceDescription() {\n" +
           gen_format(
               "    static const STPServiceDescription description{\"%s\", \"%s\", \"%s\", 0, %u, %u, "
               "receiveRows, sendRows, {}};\n",
               side.service.name.c_str(), side.own.name.c_str(), side.service.version.c_str(), side.own.id,
               side.peer.id) +
           "    return description;\n}\n\n";
}

std::string stub(const Side& side, const DescribedMessage& message) {
    const std::string name = message.name, form = side.form();
    std::string text = stubSignature(side, message, side.className() + "::", "") + " {\n";
    text += "    std::string body = stp_WriteBody(" + form + ", \"" + name + "\", request);\n";
    text += "    const std::string fields = logsSends() ? stp_FieldsAsText(request) : std::string();\n";
    const std::string call = gen_format("(%s, %u, std::move(body), fields, ", form.c_str(), message.number);
    if (!message.hasReply()) return text + "    return callOneWay" + call + "how, retry, status);\n}\n\n";
    text += "    const STPMessagePtr reply = callTwoWay" + call + "retry, status);\n";
    text += "    if (!reply) return std::nullopt;\n";
    text += "    auto answer = stp_ReadBody<" + side.reply(message) + ">(" + form + ", reply->body);\n";
    text += "    if (logsReceipts()) logReceived(\"RECV\", \"" + name + "\", stp_FieldsAsText(answer));\n";
    return text + "    return answer;\n}\n\n";
}

std::string dispatchCase(const Side& side, const DescribedMessage& message) {
    const std::string name = message.name, form = side.form();
    std::string text = gen_format("        case %u: {\n", message.number);
    text += "            const auto request = stp_ReadBody<" + side.request(message) + ">(" + form +
            ", message.body);\n";
    text += "            if (logsReceipts()) logReceived(\"RECV\", \"" + name +
            "\", stp_FieldsAsText(request));\n";
    if (!message.hasReply()) return text + "            return " + name + "(request);\n        }\n";
    text += "            const auto answer = " + name + "(request);\n";
    text += "            if (!reply) return;\n";
    text += "            reply->body = stp_WriteBody(" + form + ", \"\", answer);\n";
    text += "            if (logsReceipts()) logReceived(\"REPLY\", \"" + name +
            "\", stp_FieldsAsText(answer));\n";
    return text + "            return;\n        }\n";
}

std::string dispatcher(const Side& side) {
    bool replies = false;
    std::string cases;
    for (const DescribedMessage& message : side.own.receives) {
        if (!message.fields) continue;
        replies = replies || message.hasReply();
        cases += dispatchCase(side, message);
    }
    return "void " + side.className() + "::" + side.handler() + "(const STPMessage& message, STPMessage*" +
           (replies ? " reply" : "") + ", uint32_t number) {\n    switch (number) {\n" + cases +
           "        default: return;  // one that is known by name only, or not at all\n    }\n}\n";
}

EmittedFile source(const Side& side) {
    const std::string unit = unitName(side.service, side.own.name + "_impl");
    std::string text = notice;
    text += "#include \"services/generated/" + unit +
            ".h\"\n\n#include <array>\n#include <utility>\n\nnamespace {\n\n";
    text += table("receiveRows", side.own) + "\n" + table("sendRows", side.peer) + "\n}  // namespace\n\n";
    text += description(side);
    for (const DescribedMessage& message : side.peer.receives)
        if (message.fields) text += stub(side, message);
    text += dispatcher(side);
    return {unit + ".cpp", std::move(text)};
}

std::string nameList(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
    return text;
}

std::string tableRow(const std::string& service, const std::string& side, const std::string& receives,
                     const std::string& sends) {
    return "    {\"" + service + "\", \"" + side + "\", \"" + receives + "\", \"" + sends + "\"},\n";
}

std::string namesOf(const DescribedSide& side) {
    std::vector<std::string> names;
    for (const DescribedMessage& message : side.receives) names.push_back(message.name);
    std::sort(names.begin(), names.end());
    return nameList(names);
}

}  // namespace

std::vector<EmittedFile> emit_Service(const DescribedService& service) {
    std::vector<EmittedFile> files;
    if (!service.hasClasses()) return files;
    files.push_back(messages(service));
    for (size_t i = 0; i < 2; ++i) {
        const Side side{service, service.sides[i], service.sides[1 - i]};
        files.push_back(header(side));
        files.push_back(source(side));
    }
    return files;
}

std::vector<EmittedFile> emit_Tables(const std::vector<DescribedService>& services) {
    std::string text = notice;
    text +=
        "#include \"services/descriptions/service_table.h\"\n\nnamespace {\n\nconstexpr ServiceTableRow "
        "rows[] = {\n";
    for (const DescribedService& service : services)
        for (size_t i = 0; i < service.sides.size(); ++i) {
            const std::string& side = service.sides[i].name;
            if (service.hasClasses())
                text +=
                    tableRow(service.name, side, namesOf(service.sides[i]), namesOf(service.sides[1 - i]));
            else
                text += tableRow(service.name, side, nameList(service.receives), nameList(service.sends));
        }
    text +=
        "};\n\n}  // namespace\n\nstd::span<const ServiceTableRow> service_Table() {\n    return rows;\n}\n";
    return {{"service_table.cpp", std::move(text)}};
}
