#include "platform/files.h"

namespace quirepress {

std::string Files::ShortPath(std::string_view path) {
    return std::string(path);
}

const char* DescribeFileResult(FileResult result) {
    switch (result) {
        case FileResult::kDone:
            return "it is done";
        case FileResult::kMissing:
            return "it does not exist";
        case FileResult::kNoAccess:
            return "access is denied";
        case FileResult::kExists:
            return "it exists already";
        case FileResult::kNoSpace:
            return "no space is left on the disk";
        case FileResult::kBadName:
            return "the name cannot be used";
        case FileResult::kBusy:
            return "it is in use";
        case FileResult::kOtherVolume:
            return "it is on another volume";
        case FileResult::kFailed:
            break;
    }
    return "the system reported an error";
}

}  // namespace quirepress
