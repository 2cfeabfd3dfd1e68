#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/post_print.h"
#include "core/run_notices.h"
#include "logs/error_log.h"
#include "unit/core/list_fixture.h"

namespace quirepress {

class RecordedNotices : public RunNotices {
public:
    struct Notice {
        int kind;
        std::string body;
    };
    void Notify(int kind, std::string_view body, std::string_view attachment) override {
        EXPECT_EQ(attachment, "");
        all.push_back({kind, std::string(body)});
    }
    std::vector<Notice> all;
};

// The handling over real files: "in" holds the documents, "out" is where they go.
class PostPrintFixture : public ListFixture {
protected:
    PostPrintFixture() { m_postPrint.UseNotices(&m_notices); }

    PostPrint MakePostPrint(Files& used) {
        return PostPrint({used, loop, clock, prompts, debugLog, m_errorLog, m_options,
                          WithTrailingSeparator(folder.Path())});
    }
    std::string Put(const std::string& name = "in/a.pdf", const std::string& bytes = "bytes") const {
        return folder.Write(name, bytes);
    }
    std::string PathOf(std::string_view name) const { return folder.PathOf(name); }
    bool Check(const std::string& path, const std::string& moveTo) {
        return m_postPrint.CheckForFileOnMove(path, moveTo, FileTitle(path));
    }
    std::string Read(std::string_view name) const { return folder.Read(name); }
    bool Has(std::string_view name) const { return folder.Has(name); }
    static int Count(const std::string& text, std::string_view part) {
        int count = 0;
        for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
        return count;
    }
    void OpenDebugLog() { ASSERT_EQ(debugLog.Open(files, PathOf("qpr.log")), 0); }

    const std::string m_separator = std::string(1, PlatformSeparator());
    ErrorLog m_errorLog{files, clock, PathOf("error.log")};
    RecordedNotices m_notices;
    PostPrint m_postPrint = MakePostPrint(files);
};

}  // namespace quirepress
