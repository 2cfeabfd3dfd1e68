#include "platform/registry.h"

#include <poll.h>

#include <memory>

#include "base/path.h"
#include "platform/file_tools.h"
#include "platform/linux/make_services.h"
#include "platform/linux/registry_text.h"
#include "platform/machine.h"

namespace quirepress {

namespace {

constexpr std::int64_t kLargestFile = 16'777'216;

// One file, replaced as a whole: a reader needs no lock, writers take turns.
class LinuxRegistry : public Registry {
public:
    LinuxRegistry(Files& files, Machine& machine) : m_files(files), m_machine(machine) {}

    int ReadNumber(std::string_view key, std::string_view name, std::uint32_t& number) override {
        RegistryValue value;
        if (!FindValue(key, name, value) || !value.isNumber) return -1;
        number = value.number;
        return 0;
    }

    int ReadText(std::string_view key, std::string_view name, std::string& text) override {
        RegistryValue value;
        if (!FindValue(key, name, value) || value.isNumber) return -1;
        text = value.text;
        return 0;
    }

    int WriteNumber(std::string_view key, std::string_view name, std::uint32_t number) override {
        return WriteValue(key, {std::string(name), true, number, {}});
    }

    int WriteText(std::string_view key, std::string_view name, std::string_view text) override {
        return WriteValue(key, {std::string(name), false, 0, std::string(text)});
    }

    int EraseValue(std::string_view key, std::string_view name) override {
        return ChangeFile([&](RegistryText& registry) {
            return registry.values.erase({std::string(key), std::string(name)}) == 1;
        });
    }

    std::vector<RegistryValue> ListValues(std::string_view key) override {
        std::vector<RegistryValue> values;
        RegistryText registry;
        if (!ReadFile(registry)) return values;
        const std::string wanted(key);
        for (auto it = registry.values.lower_bound({wanted, {}});
             it != registry.values.end() && it->first.first == wanted; ++it)
            values.push_back(it->second);
        return values;
    }

private:
    // Empty when this user has no place for settings.
    std::string Folder() {
        std::string folder;
        if (m_machine.ReadEnvironment("XDG_CONFIG_HOME", folder) && IsAbsolutePath(folder))
            return JoinPath(folder, "quirepress");
        if (m_machine.ReadEnvironment("HOME", folder) && IsAbsolutePath(folder))
            return JoinPath(folder, ".config/quirepress");
        return {};
    }

    std::string FilePath() { return JoinPath(Folder(), "registry"); }

    // False when it cannot be read; a file that is not there yet is an empty one.
    bool ReadFile(RegistryText& registry) {
        if (Folder().empty()) return false;
        std::string text;
        FileResult result = FileResult::kDone;
        const bool read = ReadWholeFile(m_files, FilePath(), kLargestFile, text, result);
        if (read) registry = ParseRegistry(text);
        return read || result == FileResult::kMissing;
    }

    bool FindValue(std::string_view key, std::string_view name, RegistryValue& value) {
        RegistryText registry;
        if (!ReadFile(registry)) return false;
        const auto found = registry.values.find({std::string(key), std::string(name)});
        if (found == registry.values.end()) return false;
        value = found->second;
        return true;
    }

    int WriteValue(std::string_view key, const RegistryValue& value) {
        return ChangeFile([&](RegistryText& registry) {
            registry.values[{std::string(key), value.name}] = value;
            return true;
        });
    }

    // `change` answers whether there is anything to write.
    template <typename Change>
    int ChangeFile(const Change& change) {
        const std::string folder = Folder();
        if (folder.empty() || m_files.MakeFolders(folder) != FileResult::kDone) return -1;
        const std::unique_ptr<FileLock> lock = WaitForLock(JoinPath(folder, "registry.lock"));
        RegistryText registry;
        if (!lock || !ReadFile(registry) || !change(registry)) return -1;
        const std::string text = WriteRegistry(registry);
        if (static_cast<std::int64_t>(text.size()) > kLargestFile) return -1;
        return ReplaceFileDurably(m_files, FilePath(), text, FileAccess::kOwnerOnly) == FileResult::kDone
                   ? 0
                   : -1;
    }

    // A holder keeps it for one replacement of the file; only a stopped one for longer.
    std::unique_ptr<FileLock> WaitForLock(const std::string& path) {
        constexpr int kMostTries = 1000;
        constexpr int kMillisecondsBetween = 2;
        FileResult result = FileResult::kBusy;
        for (int i = 0; i < kMostTries && result == FileResult::kBusy; ++i) {
            if (i > 0) poll(nullptr, 0, kMillisecondsBetween);
            if (auto lock = m_files.TryLock(path, result)) return lock;
        }
        return nullptr;
    }

    Files& m_files;
    Machine& m_machine;
};

}  // namespace

std::unique_ptr<Registry> MakeRegistry(Files& files, Machine& machine) {
    return std::make_unique<LinuxRegistry>(files, machine);
}

}  // namespace quirepress
