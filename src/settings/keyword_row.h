#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace quirepress {

enum class KeywordForm {
    kFlag,          // on when its line is there
    kNegativeFlag,  // off when its line is there
    kNumber,
    kText,
    kNumbers,  // several in one line, in a fixed order
    kTexts     // one in each line; the key repeats
};

constexpr bool IsFlag(KeywordForm form) {
    return form == KeywordForm::kFlag || form == KeywordForm::kNegativeFlag;
}

// One key of a settings file. The object that holds the fields is known by its address alone; KeywordTable
// sees to it that it is of the right type.
struct KeywordRow {
    const char* key = "";
    KeywordForm form = KeywordForm::kFlag;
    const char* help = "";
    // Where the fields lie in the object, in bytes: one, but for kNumbers. They are bool for flags,
    // std::int32_t for numbers, std::string for a text, std::vector<std::string> for texts.
    std::vector<std::size_t> offsets;

    std::function<bool(const void* object)> isWritten;  // none: a flag by its form, a value always
    std::string writtenWhen;                            // that condition in words
    std::function<void(void* object)> whenMissing;      // a key without a value; none: the field stays
    bool isReset = true;                                // a load gives the field its default first
    bool isRead = true;
    bool needsModernSystem = false;  // unknown to a reader on a system older than Windows XP
};

template <typename Field>
Field& FieldAt(std::size_t offset, void* object) {
    return *reinterpret_cast<Field*>(static_cast<char*>(object) + offset);
}

template <typename Field>
const Field& FieldAt(std::size_t offset, const void* object) {
    return *reinterpret_cast<const Field*>(static_cast<const char*>(object) + offset);
}

template <typename Field, typename Object>
auto& FieldOf(const KeywordRow& row, Object* object, std::size_t index = 0) {
    return FieldAt<Field>(row.offsets[index], object);
}

}  // namespace quirepress
