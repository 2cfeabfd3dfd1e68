#include "platform/linux/placed_path.h"

#include <fcntl.h>

#include <cstring>

namespace quirepress {

PlacedPath::PlacedPath(std::string_view path) {
    m_name[0] = '\0';
    if (path.find('\0') != std::string_view::npos) {
        errno = EILSEQ;
        return;
    }
    while (path.size() >= PATH_MAX) {
        const std::size_t cut = path.rfind('/', PATH_MAX - 2);
        if (cut == std::string_view::npos) {
            errno = ENAMETOOLONG;
            return;
        }
        if (!EnterFolder(path.substr(0, cut + 1))) return;
        const std::size_t next = path.find_first_not_of('/', cut);
        path = next == std::string_view::npos ? std::string_view(".") : path.substr(next);
    }
    SetName(path);
    m_valid = true;
}

int PlacedPath::Folder() const {
    return m_folder.IsOpen() ? m_folder.Value() : AT_FDCWD;
}

void PlacedPath::SetName(std::string_view name) {
    std::memcpy(m_name, name.data(), name.size());
    m_name[name.size()] = '\0';
}

bool PlacedPath::EnterFolder(std::string_view folder) {
    SetName(folder);
    Descriptor next(
        RetryInterrupted([&] { return openat(Folder(), m_name, O_PATH | O_DIRECTORY | O_CLOEXEC); }));
    if (!next.IsOpen()) return false;
    m_folder = std::move(next);
    return true;
}

Descriptor OpenPath(std::string_view path, int flags, unsigned mode) {
    const PlacedPath place(path);
    if (!place.IsValid()) return {};
    const int allFlags = flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    return Descriptor(RetryInterrupted([&] { return openat(place.Folder(), place.Name(), allFlags, mode); }));
}

}  // namespace quirepress
