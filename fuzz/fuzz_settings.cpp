// Any bytes are read as general_setup.ini and misc.ini. Every line that a save makes of them comes back from
// the next one, which adds no more than defaults for values that have no line; from there on nothing changes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/code_page.h"
#include "base/text.h"
#include "settings/general_settings.h"
#include "settings/keyword_file.h"
#include "settings/misc_options.h"

namespace {

using namespace quirepress;

template <typename Options>
bool Save(const KeywordTable<Options>& table, const Options& options, std::string_view old,
          std::string& bytes) {
    std::string flaw;
    const bool isSaved = WriteKeywords(table.Rows(), table.File(), Windows1252(), old, &options, bytes, flaw);
    if (isSaved != flaw.empty()) std::abort();
    return isSaved;
}

template <typename Options>
Options Load(const KeywordTable<Options>& table, std::string_view bytes, bool isModernSystem) {
    Options options;
    KeywordReading reading;
    reading.isModernSystem = isModernSystem;
    ReadKeywords(table.Rows(), table.File(), Windows1252(), bytes, &options, reading);
    return options;
}

template <typename Options>
std::string SaveAgain(const KeywordTable<Options>& table, std::string_view bytes) {
    std::string again;
    if (!Save(table, Load(table, bytes, true), bytes, again)) std::abort();
    return again;
}

template <typename Options>
void Check(const KeywordTable<Options>& table, std::string_view bytes) {
    Load(table, bytes, false);
    std::string first;
    // A text can be too long once it is UTF-8.
    if (!Save(table, Load(table, bytes, true), bytes, first)) return;
    const std::string second = SaveAgain(table, first);
    for (const std::string_view line : SplitAt(first, '\n'))
        if (!Contains(second, line)) std::abort();
    if (SaveAgain(table, second) != second) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Check(GeneralKeywords(), bytes);
    Check(MiscKeywords(), bytes);
    return 0;
}
