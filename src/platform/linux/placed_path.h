#pragma once

#include <climits>
#include <string_view>

#include "platform/linux/descriptor.h"

namespace quirepress {

// A path in the form that the system's calls take: a folder's descriptor and a name below it. What is longer
// than one call takes is walked in pieces.
class PlacedPath {
public:
    explicit PlacedPath(std::string_view path);

    // False when the name is none or a folder on the way cannot be passed; errno says why.
    bool IsValid() const { return m_valid; }
    int Folder() const;
    const char* Name() const { return m_name; }

private:
    void SetName(std::string_view name);
    bool EnterFolder(std::string_view folder);

    Descriptor m_folder;
    bool m_valid = false;
    char m_name[PATH_MAX];  // filled by the constructor, no further than needed
};

// open() of a path of any length; never waits for the other end of a FIFO, never passed on to a program.
Descriptor OpenPath(std::string_view path, int flags, unsigned mode = 0);

}  // namespace quirepress
