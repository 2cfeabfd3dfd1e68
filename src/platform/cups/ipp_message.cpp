#include "platform/cups/ipp_message.h"

#include <cups/cups.h>

#include <algorithm>
#include <array>

#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::size_t kLongestPrinterName = 127;

bool IsControl(char c) {
    return (static_cast<unsigned char>(c) < 0x20) || c == 0x7F;
}

// ippNewRequest would ask in the user's language; what is said here is matched and shown in English.
IppRequest NewRequest(ipp_op_t operation, const char* target, const std::string& address,
                      const std::string& user) {
    IppRequest request = {IppMessage(ippNew()), "/"};
    ipp_t* message = request.message.get();
    ippSetOperation(message, operation);
    ippSetRequestId(message, 1);
    ippAddString(message, IPP_TAG_OPERATION, IPP_TAG_CHARSET, "attributes-charset", nullptr, "utf-8");
    ippAddString(message, IPP_TAG_OPERATION, IPP_TAG_LANGUAGE, "attributes-natural-language", nullptr, "en");
    if (target != nullptr)
        ippAddString(message, IPP_TAG_OPERATION, IPP_TAG_URI, target, nullptr, address.c_str());
    ippAddString(message, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, user.c_str());
    return request;
}

}  // namespace

bool IsCupsPrinterName(std::string_view name) {
    const auto isRefused = [](char c) {
        return IsControl(c) || std::string_view(" /\\?#'\"").find(c) != std::string_view::npos;
    };
    return !name.empty() && name.size() <= kLongestPrinterName && name != "." && name != ".." &&
           std::none_of(name.begin(), name.end(), isRefused);
}

IppRequest NewServerRequest(ipp_op_t operation, const std::string& user) {
    return NewRequest(operation, nullptr, {}, user);
}

IppRequest NewPrinterRequest(ipp_op_t operation, std::string_view printer, const std::string& user) {
    std::array<char, 1024> address = {};
    const std::string resource = "/printers/" + std::string(printer);
    httpAssembleURI(HTTP_URI_CODING_ALL, address.data(), static_cast<int>(address.size()), "ipp", nullptr,
                    "localhost", 0, resource.c_str());
    IppRequest request = NewRequest(operation, "printer-uri", address.data(), user);
    request.resource = resource;
    return request;
}

IppRequest NewJobRequest(ipp_op_t operation, int job, const std::string& user) {
    IppRequest request =
        NewRequest(operation, "job-uri", "ipp://localhost/jobs/" + std::to_string(job), user);
    request.resource = "/jobs";
    return request;
}

void AskFor(const IppRequest& request, const std::vector<const char*>& attributes) {
    ippAddStrings(request.message.get(), IPP_TAG_OPERATION, IPP_CONST_TAG(IPP_TAG_KEYWORD),
                  "requested-attributes", static_cast<int>(attributes.size()), nullptr, attributes.data());
}

std::string ToIppName(std::string_view text) {
    std::string name = ToUtf8ForDisplay(text);
    std::replace_if(name.begin(), name.end(), IsControl, '_');
    if (name.size() <= kLongestName) return name;
    std::size_t start = name.size() - kLongestName;
    while (start < name.size() && (static_cast<unsigned char>(name[start]) & 0xC0U) == 0x80U) ++start;
    return name.substr(start);
}

std::string_view IppText(ipp_attribute_t* attribute, int index) {
    const char* text = ippGetString(attribute, index, nullptr);
    return text != nullptr ? std::string_view(text) : std::string_view();
}

int IppNumber(ipp_attribute_t* attribute) {
    const ipp_tag_t tag = ippGetValueTag(attribute);
    return tag == IPP_TAG_INTEGER || tag == IPP_TAG_ENUM ? ippGetInteger(attribute, 0) : 0;
}

bool IppFlag(ipp_attribute_t* attribute) {
    return ippGetValueTag(attribute) == IPP_TAG_BOOLEAN && ippGetBoolean(attribute, 0) != 0;
}

std::vector<std::string_view> IppTexts(ipp_attribute_t* attribute) {
    std::vector<std::string_view> texts(static_cast<std::size_t>(ippGetCount(attribute)));
    for (int i = 0; i < ippGetCount(attribute); ++i)
        texts[static_cast<std::size_t>(i)] = IppText(attribute, i);
    return texts;
}

std::vector<IppGroup> IppGroups(ipp_t* answer, ipp_tag_t kind) {
    std::vector<IppGroup> groups;
    bool isInside = false;
    for (ipp_attribute_t* attribute = ippFirstAttribute(answer); attribute != nullptr;
         attribute = ippNextAttribute(answer)) {
        const bool belongs = ippGetGroupTag(attribute) == kind && ippGetName(attribute) != nullptr;
        if (belongs && !isInside) groups.emplace_back();
        if (belongs) groups.back().push_back(attribute);
        isInside = belongs;
    }
    return groups;
}

}  // namespace quirepress
