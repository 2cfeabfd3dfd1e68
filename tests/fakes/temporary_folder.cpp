#include "fakes/temporary_folder.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "base/path.h"

namespace quirepress {

namespace fs = std::filesystem;

namespace {

fs::path NativePath(std::string_view path) {
    return fs::path(std::u8string(path.begin(), path.end()));
}

std::string NewFolderName() {
    static std::atomic<int> counter = 0;
    std::random_device random;
    return "quirepress-test-" + std::to_string(random()) + "-" + std::to_string(counter++);
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    const fs::path folder = fs::temp_directory_path() / NewFolderName();
    fs::create_directories(folder);
    const std::u8string text = folder.u8string();
    m_path.assign(text.begin(), text.end());
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(NativePath(m_path), ignored);
}

std::string TemporaryFolder::PathOf(std::string_view name) const {
    std::string path = JoinPath(m_path, name);
    std::replace(path.begin(), path.end(), '/', PlatformSeparator());
    return path;
}

std::string TemporaryFolder::Write(std::string_view name, std::string_view bytes) const {
    const std::string path = PathOf(name);
    fs::create_directories(NativePath(path).parent_path());
    std::ofstream out(NativePath(path), std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string TemporaryFolder::Read(std::string_view name) const {
    std::ifstream in(NativePath(PathOf(name)), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool TemporaryFolder::Has(std::string_view name) const {
    return fs::exists(NativePath(PathOf(name)));
}

}  // namespace quirepress
