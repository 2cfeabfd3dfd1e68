#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "base/credentials.h"
#include "base/format.h"
#include "logs/document_stamp.h"
#include "settings/log_options.h"

namespace quirepress {

// The duplicate check by its plain rule: every line of a log is read into a buffer of 1024 bytes, blanked
// where it is not compared, and compared. What answers faster must answer the same.
class LineByLine {
public:
    explicit LineByLine(std::string_view log) : m_rest(log) {}

    static bool IsPrinted(std::string_view log, DocumentStamp stamp, const LogCheckOptions& options) {
        if (!options.m_compareName) stamp.path.clear();
        if (!options.m_compareSize) stamp.size = 0;
        if (!options.m_compareCreated) stamp.created.clear();
        if (!options.m_compareModified) stamp.written.clear();
        const std::string candidate =
            Format("%-22s\t%-8ld\t%-160s\t%-22s\t%-22s\r\n", " ", stamp.size, AsWritten(stamp.path),
                   AsWritten(stamp.created), AsWritten(stamp.written));
        const std::string compared = candidate.substr(23, candidate.size() - 2 - 23);
        LineByLine lines(log);
        while (lines.Read()) {
            if (!options.m_compareName) lines.Blank(32, 191, ' ');
            if (!options.m_compareSize) lines.Blank(23, 23, '0');
            if (!options.m_compareSize) lines.Blank(24, 30, ' ');
            if (!options.m_compareCreated) lines.Blank(193, 214, ' ');
            if (!options.m_compareModified) lines.Blank(216, 236, ' ');
            if (lines.Has(23, compared)) return true;
        }
        return false;
    }

    static bool HasFailed(std::string_view log, std::string_view path) {
        const std::string compared = Format("%-200s", AsWritten(path));
        LineByLine lines(log);
        while (lines.Read())
            if (compared.size() == 200 && lines.Has(40, compared)) return true;
        return false;
    }

private:
    // Texts go into a log without passwords, line ends and NULs.
    static std::string AsWritten(std::string_view field) {
        std::string text = HideCredentials(field);
        std::replace_if(
            text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
        return text;
    }

    bool Read() {
        m_size = 0;
        while (m_size < 1023 && !m_rest.empty()) {
            m_buffer[m_size++] = m_rest.front();
            m_rest.remove_prefix(1);
            if (m_buffer[m_size - 1] == '\n') break;
        }
        return m_size > 0;
    }
    void Blank(std::size_t first, std::size_t last, char with) {
        for (std::size_t i = first; i <= last && i < m_size; ++i) m_buffer[i] = with;
    }
    bool Has(std::size_t column, const std::string& text) const {
        return m_size >= column + text.size() &&
               std::memcmp(m_buffer + column, text.data(), text.size()) == 0;
    }

    std::string_view m_rest;
    char m_buffer[1024] = {};
    std::size_t m_size = 0;
};

}  // namespace quirepress
