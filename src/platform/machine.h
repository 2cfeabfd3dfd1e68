#pragma once

#include <string>
#include <string_view>

#include "base/code_page.h"

namespace quirepress {

// Which of the old versions of Windows this is, as some options ask; Linux counts as the newest.
enum class SystemFamily { kWindows9x, kWindowsNt4, kWindows2000, kWindowsXpOrLater };

class Machine {
public:
    virtual ~Machine() = default;
    virtual std::string HostName() = 0;
    virtual std::string LoginName() = 0;        // the user that runs the program
    virtual std::string ProgramPath() = 0;      // absolute path of the running executable
    virtual std::string TemporaryFolder() = 0;  // ends in a separator
    virtual std::string DataFolder() = 0;       // default working folder of this user; ends in a separator
    virtual SystemFamily Family() = 0;
    // In which texts that are not UTF-8 are read; Windows-1252 where the system has none of single bytes.
    virtual CodePage SystemCodePage() { return Windows1252(); }
    virtual std::string SystemVersion() = 0;  // for logs: "Linux 6.1.0"
    // False, and `value` untouched, when it is not set.
    virtual bool ReadEnvironment(std::string_view name, std::string& value) = 0;
};

}  // namespace quirepress
