#include "console/progress.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/credentials.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "console/table.h"
#include "core/print_list.h"
#include "platform/terminal.h"

namespace quirepress {

std::string RenderBar(double share, int width) {
    const int filled = static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * width));
    return "[" + std::string(static_cast<std::size_t>(filled), '#') +
           std::string(static_cast<std::size_t>(width - filled), '-') + "]";
}

ProgressLine::ProgressLine(Terminal& terminal, const PrintList& list, bool colours)
    : m_terminal(terminal), m_list(list), m_isTerminal(terminal.ErrorsAreTerminal()), m_colours(colours) {}

std::size_t ProgressLine::WidestLine() const {
    return static_cast<std::size_t>(std::max(20, m_terminal.Columns() - 1));
}

void ProgressLine::Show(const std::string& text) {
    if (!m_isTerminal) return;
    m_terminal.WriteErrors("\r\x1b[K" + CutMiddle(ToPrintableLine(text), WidestLine()));
    m_isDrawn = true;
}

void ProgressLine::Clear() {
    if (m_isDrawn) m_terminal.WriteErrors("\r\x1b[K");
    m_isDrawn = false;
}

void ProgressLine::Draw(const RunProgress& progress) {
    if (!m_isTerminal || progress.files == 0) return;
    constexpr int kBarWidth = 20;
    double inside = 0;
    if (progress.bytesTotal > 0)
        inside = static_cast<double>(progress.bytesDone) / static_cast<double>(progress.bytesTotal);
    const double share = (progress.file - 1 + inside) / progress.files;
    std::string text = RenderBar(share, kBarWidth) + Format(" File: %d of %d, Copy: %d/%d", progress.file,
                                                            progress.files, progress.copy, progress.copies);
    if (progress.secondsLeft >= 0)
        text += Format("  DPM:%d  ETA:%.2d:%.2d", std::lround(progress.documentsPerMinute),
                       progress.secondsLeft / 60, progress.secondsLeft % 60);
    text += "  ";
    if (progress.row >= 0 && progress.row < m_list.RowCount()) {
        text += m_list.Text(progress.row, kColumnStatus);
        text += "  ";
        // The name gives way first: what comes before it tells how far the run is.
        const std::string name =
            ToPrintableLine(FileTitle(HideCredentials(m_list.Text(progress.row, kColumnFilename))));
        const std::size_t used = CountCharacters(text);
        if (WidestLine() > used) text += CutMiddle(name, WidestLine() - used);
    }
    Show(text);
}

void ProgressLine::OnRunStarted(int /*rows*/, int /*copies*/) {}

void ProgressLine::OnWaiting(std::string_view what) {
    Show(std::string(what));
    if (!m_isTerminal && !std::exchange(m_hasToldWait, true))
        m_terminal.WriteErrors(ToPrintableLine(what) + "\n");
}

void ProgressLine::OnRowStarted(const RunProgress& progress) {
    Draw(progress);
}

void ProgressLine::OnProgress(const RunProgress& progress) {
    Draw(progress);
}

void ProgressLine::OnRowFinished(const RunProgress& progress, RowOutcome outcome) {
    if (!m_isTerminal || outcome != RowOutcome::kFailed || progress.row >= m_list.RowCount()) return;
    Clear();
    const std::string line = HideCredentials(m_list.Text(progress.row, kColumnFilename)) + ": " +
                             std::string(m_list.Text(progress.row, kColumnStatus));
    m_terminal.WriteErrors(Shaded(ToPrintableLine(line), Shade::kBad, m_colours) + "\n");
}

}  // namespace quirepress
