#include "platform/machine.h"

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <vector>

#include "base/path.h"
#include "platform/linux/make_services.h"

namespace quirepress {

namespace {

struct Account {
    std::string name;
    std::string home;
};

// Empty texts when the system does not know the user.
Account ReadAccount() {
    constexpr std::size_t kMostBytes = 1 << 20;
    std::vector<char> buffer(1024);
    passwd record = {};
    passwd* found = nullptr;
    while (getpwuid_r(geteuid(), &record, buffer.data(), buffer.size(), &found) == ERANGE &&
           buffer.size() < kMostBytes)
        buffer.resize(buffer.size() * 2);
    if (found == nullptr) return {};
    return {found->pw_name, found->pw_dir};
}

class LinuxMachine : public Machine {
public:
    std::string HostName() override {
        std::array<char, HOST_NAME_MAX + 1> name = {};
        return gethostname(name.data(), HOST_NAME_MAX) == 0 ? name.data() : "localhost";
    }

    std::string LoginName() override {
        std::string name = ReadAccount().name;
        if (name.empty()) ReadEnvironment("LOGNAME", name);
        return name.empty() ? std::to_string(geteuid()) : name;
    }

    std::string ProgramPath() override {
        std::array<char, PATH_MAX> path = {};
        const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
        return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
    }

    std::string TemporaryFolder() override {
        std::string folder = AbsoluteFolder("TMPDIR");
        return WithTrailingSeparator(folder.empty() ? "/tmp" : folder);
    }

    std::string DataFolder() override {
        const std::string folder = AbsoluteFolder("XDG_DATA_HOME");
        if (!folder.empty()) return JoinPath(folder, "quirepress/");
        std::string home = AbsoluteFolder("HOME");
        if (home.empty()) home = ReadAccount().home;
        return JoinPath(home.empty() ? "/" : home, ".local/share/quirepress/");
    }

    SystemFamily Family() override { return SystemFamily::kWindowsXpOrLater; }

    std::string SystemVersion() override {
        utsname names = {};
        if (uname(&names) != 0) return "Linux";
        return std::string(names.sysname) + " " + names.release;
    }

    bool ReadEnvironment(std::string_view name, std::string& value) override {
        const char* const found = getenv(std::string(name).c_str());
        if (found == nullptr) return false;
        value = found;
        return true;
    }

private:
    // What the variable names when that is an absolute path; relative ones are to be ignored.
    std::string AbsoluteFolder(std::string_view variable) {
        std::string folder;
        return ReadEnvironment(variable, folder) && IsAbsolutePath(folder) ? folder : std::string();
    }
};

}  // namespace

std::unique_ptr<Machine> MakeMachine() {
    return std::make_unique<LinuxMachine>();
}

}  // namespace quirepress
