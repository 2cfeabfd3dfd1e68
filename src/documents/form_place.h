#pragma once

#include <string>
#include <string_view>

namespace quirepress {

class Files;

// Where the form lies that forms data at `dataPath` name: beside them, where its name is no whole path. False
// with `flaw`, a sentence part that names it, when it is missing or would have to be fetched from another
// machine.
bool FindForm(Files& files, std::string_view dataPath, const std::string& name, std::string& path,
              std::string& flaw);

}  // namespace quirepress
