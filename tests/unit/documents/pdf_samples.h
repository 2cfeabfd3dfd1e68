#pragma once

#include <functional>
#include <string>
#include <vector>

#include "fakes/small_pdf.h"

class QPDFWriter;

namespace quirepress {

// PDF files made for the tests, in memory.

// Classic cross references, a page tree of two levels (`fan` pages a node), a content stream a page.
std::string MakePdf(int pages, int fan = 8);

// The same document written anew by the PDF library, as `setUp` tells its writer.
std::string RewritePdf(const std::string& pdf, const std::function<void(QPDFWriter&)>& setUp);
std::string WithObjectStreams(const std::string& pdf);
std::string Linearized(const std::string& pdf);

enum class Cipher { kRc4Of40, kRc4Of128, kAes128, kAes256 };
std::string Encrypted(const std::string& pdf, Cipher cipher, const std::string& userPassword,
                      bool objectStreams);

std::string Deflated(const std::string& bytes);

// The pages of a file of MakePdf's kind, by the numbers in their texts: "0 1 7 "; "2@90 " for a turned one,
// "encrypted " before all where a password protects them.
std::string DescribePages(const std::string& pdf);

// What the PDF library finds on a path of keys and indexes from a page (by its number, from 0) or the "root":
// "0 /Annots 2 /Dest". References stay references; "=" at the end gives what one stands for, "data" the bytes
// of a stream. The test fails when the library has warnings.
std::string ObjectAt(const std::string& pdf, const std::string& path);

// `text` with its first `from` replaced by `to`; the test fails when there is none.
std::string Replaced(std::string text, const std::string& from, const std::string& to);

}  // namespace quirepress
