#pragma once

#include <string>
#include <string_view>

#include "core/print_run.h"

namespace quirepress {

class PrintList;
class Terminal;

// One line on standard error that is drawn over while a run goes on. Where that is no terminal, it says only
// that the run has to wait, and that once.
class ProgressLine : public RunObserver {
public:
    ProgressLine(Terminal& terminal, const PrintList& list, bool colours);

    void OnRunStarted(int rows, int copies) override;
    void OnWaiting(std::string_view what) override;
    void OnRowStarted(const RunProgress& progress) override;
    void OnProgress(const RunProgress& progress) override;
    void OnRowFinished(const RunProgress& progress, RowOutcome outcome) override;

    void Show(const std::string& text);
    void Clear();

private:
    void Draw(const RunProgress& progress);
    std::size_t WidestLine() const;  // characters

    Terminal& m_terminal;
    const PrintList& m_list;
    bool m_isTerminal;
    bool m_colours;
    bool m_isDrawn = false;
    bool m_hasToldWait = false;
};

// "[#####-----]", `width` characters between the brackets; `share` from 0 to 1.
std::string RenderBar(double share, int width);

}  // namespace quirepress
