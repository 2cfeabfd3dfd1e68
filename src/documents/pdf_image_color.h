#pragma once

#include <qpdf/QPDFObjectHandle.hh>

#include "documents/pdf_color_space.h"
#include "documents/pdf_page_color.h"

namespace quirepress {

// The colour of an image XObject that is no mask, by its colour space, and by its pixels where these are
// needed and can be read.
PageColor JudgeImage(QPDFObjectHandle image, const PdfColorSpace& space, const GreyRule& rule);

}  // namespace quirepress
