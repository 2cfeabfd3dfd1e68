#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/run_way.h"

namespace quirepress {

class Files;

// The processing parameters of documents whose rows have none of their own. A ".pro" item sets them for the
// rows below it: a text file whose first line holds the parameters, as the column would ("-s2|-e5"); none,
// when the line is empty. Below an item that can't be used no document is printed by what held before.
class ProcessingDefaults {
public:
    explicit ProcessingDefaults(Files& files) : m_files(files) {}

    // Instead of parameters; reads as pages that nobody can tell.
    static constexpr std::string_view kUnusable = "-s?";
    static constexpr const char* kFlaw = "the processing settings above it can't be used";

    static bool TakesItem(std::string_view path);
    // False, with `message`; the parameters are then kUnusable.
    bool ApplyItem(std::string_view path, std::string& message);
    void Clear() { m_parameters.clear(); }
    const std::string& Parameters() const { return m_parameters; }

private:
    Files& m_files;
    std::string m_parameters;
};

std::unique_ptr<RunWay> MakeProcessingWay(ProcessingDefaults& defaults);

}  // namespace quirepress
