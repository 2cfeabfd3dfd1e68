#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

#include "settings/keyword_row.h"
#include "settings/settings_file.h"

namespace quirepress {

// A row of the table of an Options object. The calls that follow its making say what is particular about it:
//     Number("PAUSE1AFTER", &GeneralOptions::m_pauseAfter, "...").WhenMissing(2).WrittenWhenNonZero()
template <typename Options>
class KeywordRowFor {
public:
    template <typename Field>
    KeywordRowFor(const char* key, KeywordForm form, std::initializer_list<Field Options::*> members,
                  const char* help) {
        m_row.key = key;
        m_row.form = form;
        m_row.help = help;
        for (const auto member : members) m_row.offsets.push_back(OffsetOf(member));
    }
    // A field of one of several parts of the same kind.
    template <typename Part, std::size_t kParts, typename Field>
    KeywordRowFor(const char* key, KeywordForm form, std::array<Part, kParts> Options::*parts,
                  std::size_t index, Field Part::*member, const char* help)
        : KeywordRowFor<Options>(key, form, std::initializer_list<Field Options::*>{}, help) {
        m_row.offsets.push_back(OffsetOf(parts) + index * sizeof(Part) + OffsetOf(member));
    }

    // For numbers; other numbers have no line.
    KeywordRowFor& WrittenWhenNonZero() {
        return WrittenWhenField<std::int32_t>([](std::int32_t value) { return value != 0; }, "not 0");
    }
    KeywordRowFor& WrittenWhenAtLeast(std::int32_t least) {
        return WrittenWhenField<std::int32_t>([least](std::int32_t value) { return value >= least; },
                                              "at least " + std::to_string(least));
    }
    // For texts.
    KeywordRowFor& WrittenWhenNotEmpty() {
        return WrittenWhenField<std::string>([](const std::string& text) { return !text.empty(); },
                                             "not empty");
    }
    KeywordRowFor& WrittenWhen(bool (*condition)(const Options&), const char* inWords) {
        m_row.isWritten = [condition](const void* object) {
            return condition(*static_cast<const Options*>(object));
        };
        m_row.writtenWhen = inWords;
        return *this;
    }

    // What a reader does with the key without a value.
    KeywordRowFor& WhenMissing(std::int32_t value) {
        m_row.whenMissing = [offset = FirstOffset(), value](void* object) {
            FieldAt<std::int32_t>(offset, object) = value;
        };
        return *this;
    }
    KeywordRowFor& WhenMissing(const char* text) {
        m_row.whenMissing = [offset = FirstOffset(), text](void* object) {
            FieldAt<std::string>(offset, object) = text;
        };
        return *this;
    }
    KeywordRowFor& WhenMissing(void (*change)(Options&)) {
        m_row.whenMissing = [change](void* object) { change(*static_cast<Options*>(object)); };
        return *this;
    }

    // A second load leaves the field as it is when its key is gone.
    KeywordRowFor& KeptByLoad() {
        m_row.isReset = false;
        return *this;
    }
    KeywordRowFor& WriteOnly() {
        m_row.isRead = false;
        return *this;
    }
    KeywordRowFor& NeedsModernSystem() {
        m_row.needsModernSystem = true;
        return *this;
    }

    const KeywordRow& Row() const { return m_row; }

private:
    template <typename Object, typename Field>
    static std::size_t OffsetOf(Field Object::*member) {
        static_assert(std::is_standard_layout_v<Object>, "fields are found by their place in the object");
        static const Object sample{};
        return static_cast<std::size_t>(reinterpret_cast<const char*>(&(sample.*member)) -
                                        reinterpret_cast<const char*>(&sample));
    }

    std::size_t FirstOffset() const { return m_row.offsets.front(); }

    template <typename Field, typename Condition>
    KeywordRowFor& WrittenWhenField(Condition condition, std::string inWords) {
        m_row.isWritten = [offset = FirstOffset(), condition](const void* object) {
            return condition(FieldAt<Field>(offset, object));
        };
        m_row.writtenWhen = std::move(inWords);
        return *this;
    }

    KeywordRow m_row;
};

template <typename Options>
KeywordRowFor<Options> Flag(const char* key, bool Options::*member, const char* help) {
    return {key, KeywordForm::kFlag, {member}, help};
}

// For keys such as "DONT..." and "NO...": the field holds the positive option, the line says that it is off.
template <typename Options>
KeywordRowFor<Options> NegativeFlag(const char* key, bool Options::*member, const char* help) {
    return {key, KeywordForm::kNegativeFlag, {member}, help};
}

template <typename Options>
KeywordRowFor<Options> Number(const char* key, std::int32_t Options::*member, const char* help) {
    return {key, KeywordForm::kNumber, {member}, help};
}

template <typename Options>
KeywordRowFor<Options> Numbers(const char* key, std::initializer_list<std::int32_t Options::*> members,
                               const char* help) {
    return {key, KeywordForm::kNumbers, members, help};
}

template <typename Options>
KeywordRowFor<Options> Text(const char* key, std::string Options::*member, const char* help) {
    return {key, KeywordForm::kText, {member}, help};
}

// The same for the part of this index of an array: Text("PRINTER2", &Options::m_printers, 1, &Printer::name).
template <typename Options, typename Part, std::size_t kParts>
KeywordRowFor<Options> Number(const char* key, std::array<Part, kParts> Options::*parts, std::size_t index,
                              std::int32_t Part::*member, const char* help) {
    return {key, KeywordForm::kNumber, parts, index, member, help};
}

template <typename Options, typename Part, std::size_t kParts>
KeywordRowFor<Options> Text(const char* key, std::array<Part, kParts> Options::*parts, std::size_t index,
                            std::string Part::*member, const char* help) {
    return {key, KeywordForm::kText, parts, index, member, help};
}

// A key that stands once for each of the texts.
template <typename Options>
KeywordRowFor<Options> Texts(const char* key, std::vector<std::string> Options::*member, const char* help) {
    return {key, KeywordForm::kTexts, {member}, help};
}

// A settings file and its rows, in the order of its writer.
template <typename Options>
class KeywordTable {
public:
    KeywordTable(SettingsFile file, const std::vector<KeywordRowFor<Options>>& rows) : m_file(file) {
        for (const KeywordRowFor<Options>& row : rows) m_rows.push_back(row.Row());
    }
    const SettingsFile& File() const { return m_file; }
    const std::vector<KeywordRow>& Rows() const { return m_rows; }

private:
    SettingsFile m_file;
    std::vector<KeywordRow> m_rows;
};

}  // namespace quirepress
