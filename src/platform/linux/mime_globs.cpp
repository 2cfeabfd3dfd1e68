#include "platform/linux/mime_globs.h"

#include <vector>

#include "base/text.h"

namespace quirepress {

void AddMimeGlobs(std::string_view globs, TypesByEnding& types) {
    // The database lists the greatest weights first.
    for (const std::string_view line : SplitAt(globs, '\n')) {
        const std::vector<std::string_view> fields = SplitAt(line, ':');
        if (StartsWith(line, "#") || fields.size() < 3 || !StartsWith(fields[2], "*.")) continue;
        const std::string_view ending = fields[2].substr(1);
        if (ending.find_first_of("*?[", 1) == std::string_view::npos)
            types.emplace(ToLowerAscii(ending), ToLowerAscii(fields[1]));
    }
}

}  // namespace quirepress
