#include "platform/libraries.h"

#include <dlfcn.h>

#include "platform/files.h"
#include "platform/linux/make_services.h"

namespace quirepress {

namespace {

class LoadedLibrary : public Library {
public:
    explicit LoadedLibrary(void* handle) : m_handle(handle) {}
    ~LoadedLibrary() override { dlclose(m_handle); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    void* FindSymbol(const std::string& name) override { return dlsym(m_handle, name.c_str()); }

private:
    void* m_handle;
};

std::string LastError() {
    const char* const text = dlerror();
    return text != nullptr ? text : "the library cannot be loaded";
}

class LinuxLibraries : public Libraries {
public:
    explicit LinuxLibraries(Files& files) : m_files(files) {}

    std::unique_ptr<Library> Load(std::string_view path, std::string& error) override {
        const std::string name(path);
        // The loader would take the empty name for this program, end at a NUL, and wait for a FIFO.
        const bool isFile = name.find('/') != std::string::npos;
        if (name.empty() || name.find('\0') != std::string::npos ||
            (isFile && m_files.Inspect(name).kind != FileKind::kRegular)) {
            error = name + ": cannot open shared object file";
            return nullptr;
        }
        void* const handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) {
            error = LastError();
            return nullptr;
        }
        return std::make_unique<LoadedLibrary>(handle);
    }

private:
    Files& m_files;
};

}  // namespace

std::unique_ptr<Libraries> MakeLibraries(Files& files) {
    return std::make_unique<LinuxLibraries>(files);
}

}  // namespace quirepress
