#include "fakes/fake_libraries.h"

namespace quirepress {

namespace {

class FakeLibrary : public Library {
public:
    FakeLibrary(const FakeLibraries::Symbols& symbols, int& loadedNow)
        : m_symbols(symbols), m_loadedNow(loadedNow) {
        ++m_loadedNow;
    }
    ~FakeLibrary() override { --m_loadedNow; }
    FakeLibrary(const FakeLibrary&) = delete;
    FakeLibrary& operator=(const FakeLibrary&) = delete;

    void* FindSymbol(const std::string& name) override {
        const auto found = m_symbols.find(name);
        return found == m_symbols.end() ? nullptr : found->second;
    }

private:
    FakeLibraries::Symbols m_symbols;
    int& m_loadedNow;
};

}  // namespace

std::unique_ptr<Library> FakeLibraries::Load(std::string_view path, std::string& error) {
    const auto found = libraries.find(std::string(path));
    if (found != libraries.end()) return std::make_unique<FakeLibrary>(found->second, loadedNow);
    error = std::string(path) + ": no such library";
    return nullptr;
}

}  // namespace quirepress
