#include "backends/printer_settings_file.h"

#include <algorithm>
#include <string>

#include "base/little_endian.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

constexpr std::size_t kLengthSize = 4;

// Reads a file from its begin on; what is missing at its end is missing in the result.
class BlockReader {
public:
    explicit BlockReader(InputFile& file) : m_file(file) {}

    bool Take(std::size_t size, std::string& bytes) {
        const std::int64_t left = std::max<std::int64_t>(m_file.Size() - m_position, 0);
        bytes.resize(static_cast<std::size_t>(std::min<std::int64_t>(static_cast<std::int64_t>(size), left)));
        const std::int64_t count = m_file.ReadAt(m_position, bytes.data(), bytes.size());
        if (count < 0) return false;
        bytes.resize(static_cast<std::size_t>(count));
        m_position += count;
        return true;
    }

private:
    InputFile& m_file;
    std::int64_t m_position = 0;
};

// What a block's reading is called when the file ends before it, ends in it, or its length cannot be.
struct BlockReadings {
    PrsReading atEnd;
    PrsReading cutShort;
    PrsReading tooLong;
};

// One length and its block.
PrsReading TakeBlock(BlockReader& reader, PrsBlock& block, const BlockReadings& readings) {
    std::string length;
    if (!reader.Take(kLengthSize, length)) return PrsReading::kUnreadable;
    if (length.empty()) return readings.atEnd;
    if (length.size() < kLengthSize) return readings.cutShort;
    block.length = ReadLittle32(length, 0);
    if (block.length > kLongestPrsBlock) return readings.tooLong;
    if (!reader.Take(block.length, block.bytes)) return PrsReading::kUnreadable;
    return block.bytes.size() < block.length ? readings.cutShort : PrsReading::kWhole;
}

void WriteBlock(ReplacementFile& file, const std::string& block) {
    std::string length(kLengthSize, '\0');
    WriteLittle32(length, 0, static_cast<std::uint32_t>(block.size()));
    file.Write(length.data(), length.size());
    file.Write(block.data(), block.size());
}

}  // namespace

bool HasPrintSetup(PrsReading reading) {
    return reading == PrsReading::kWhole || reading == PrsReading::kWithoutNames ||
           reading == PrsReading::kNamesCutShort;
}

PrsReading ReadPrintSetup(InputFile& file, PrsContent& content) {
    BlockReader reader(file);
    PrsReading reading =
        TakeBlock(reader, content.mode,
                  {PrsReading::kModeCutShort, PrsReading::kModeCutShort, PrsReading::kModeTooLong});
    if (reading != PrsReading::kWhole) return reading;
    reading = TakeBlock(reader, content.names,
                        {PrsReading::kWithoutNames, PrsReading::kNamesCutShort, PrsReading::kNamesTooLong});
    // Half a name may be another printer's.
    if (reading != PrsReading::kWhole) content.names.bytes.clear();
    return reading;
}

PrsReading ReadPrintSetup(Files& files, std::string_view path, PrsContent& content, std::string& message) {
    const std::string start = "The printer settings file " + ToPrintableLine(path) + " ";
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    message = start + "can't be opened: " + DescribeFileResult(result) + ".";
    if (!file) return PrsReading::kUnreadable;
    const PrsReading reading = ReadPrintSetup(*file, content);
    message.clear();
    if (reading == PrsReading::kUnreadable) message = start + "can't be read.";
    if (reading == PrsReading::kModeCutShort || reading == PrsReading::kNamesCutShort)
        message = start + "is cut short.";
    if (reading == PrsReading::kModeTooLong || reading == PrsReading::kNamesTooLong)
        message = start + "is damaged: it tells of more than a set-up can hold.";
    return reading;
}

FileResult WritePrintSetup(Files& files, DebugLog& debugLog, std::string_view path, const PrintSetup& setup) {
    ReplacementFile file(files, path);
    if (file.Result() != FileResult::kDone) {
        debugLog.Trace("error at CreateFile: %d\n", static_cast<int>(file.Result()));
        return file.Result();
    }
    // The rest is written all the same, so that the log has the whole extent of the trouble.
    WriteBlock(file, setup.deviceMode);
    if (file.Result() != FileResult::kDone)
        debugLog.Trace("printersettings: problem writing DevMode %d <-> %d\n", setup.deviceMode.size(), 0);
    WriteBlock(file, setup.deviceNames);
    if (file.Result() != FileResult::kDone)
        debugLog.Trace("printersettings: problem writing DevNames %d <-> %d\n", setup.deviceNames.size(), 0);
    return file.Finish();
}

}  // namespace quirepress
