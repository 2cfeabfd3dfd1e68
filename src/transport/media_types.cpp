#include "transport/media_types.h"

#include <array>

#include "base/path.h"
#include "base/text.h"

namespace quirepress {

namespace {

struct MediaType {
    std::string_view extension;
    std::string_view name;
};

// Of several extensions the usual one comes first.
constexpr std::array<MediaType, 23> kMediaTypes = {{
    {".pdf", "application/pdf"},
    {".ps", "application/postscript"},
    {".eps", "application/postscript"},
    {".pcl", "application/vnd.hp-pcl"},
    {".xps", "application/vnd.ms-xpsdocument"},
    {".txt", "text/plain"},
    {".log", "text/plain"},
    {".csv", "text/csv"},
    {".html", "text/html"},
    {".htm", "text/html"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".png", "image/png"},
    {".gif", "image/gif"},
    {".bmp", "image/bmp"},
    {".tif", "image/tiff"},
    {".tiff", "image/tiff"},
    {".zip", "application/zip"},
    {".rtf", "application/rtf"},
    {".doc", "application/msword"},
    {".docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
    {".xls", "application/vnd.ms-excel"},
    {".xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
}};

}  // namespace

std::string_view MediaTypeOf(std::string_view path) {
    const std::string_view extension = FileExtension(path);
    for (const MediaType& type : kMediaTypes)
        if (EqualIgnoringAsciiCase(extension, type.extension)) return type.name;
    return "application/octet-stream";
}

std::string_view ExtensionOf(std::string_view mediaType) {
    mediaType = TrimTrailingBlanks(mediaType.substr(0, mediaType.find(';')));
    for (const MediaType& type : kMediaTypes)
        if (EqualIgnoringAsciiCase(mediaType, type.name)) return type.extension;
    return {};
}

}  // namespace quirepress
