#pragma once

#include <cups/ipp.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

struct IppDeleter {
    void operator()(ipp_t* message) const { ippDelete(message); }
};
using IppMessage = std::unique_ptr<ipp_t, IppDeleter>;

// What goes over the wire with one call: the request and the place on the server that it is sent to.
struct IppRequest {
    IppMessage message;
    std::string resource;
};

// Whether a printer or class of CUPS can have this name. No other name is ever put into an address.
bool IsCupsPrinterName(std::string_view name);

// Each begins with what every request has, in English, in the name of `user`.
IppRequest NewServerRequest(ipp_op_t operation, const std::string& user);
// `printer` may be a class. It is a name of CUPS.
IppRequest NewPrinterRequest(ipp_op_t operation, std::string_view printer, const std::string& user);
IppRequest NewJobRequest(ipp_op_t operation, int job, const std::string& user);

void AskFor(const IppRequest& request, const std::vector<const char*>& attributes);

// A text that every server takes as a name: UTF-8 without control characters, of at most 255 bytes, of which
// the end is kept (of a path, the file).
std::string ToIppName(std::string_view text);

// Values of an answer, which may hold anything. Null or of another type: empty, 0, false.
std::string_view IppText(ipp_attribute_t* attribute, int index = 0);
int IppNumber(ipp_attribute_t* attribute);
bool IppFlag(ipp_attribute_t* attribute);
std::vector<std::string_view> IppTexts(ipp_attribute_t* attribute);

// The attributes of each printer, or job, of an answer.
using IppGroup = std::vector<ipp_attribute_t*>;
std::vector<IppGroup> IppGroups(ipp_t* answer, ipp_tag_t kind);

}  // namespace quirepress
