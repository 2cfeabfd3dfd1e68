#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/run_way.h"

namespace quirepress {

class Files;

// The processing parameters of documents whose rows have none of their own. A ".pro" item sets them for the
// rows below it: a text file whose first line holds the parameters, as the column would ("-s2|-e5").
class ProcessingDefaults {
public:
    explicit ProcessingDefaults(Files& files) : m_files(files) {}

    static bool TakesItem(std::string_view path);
    // False, and the parameters stay, with `message`.
    bool ApplyItem(std::string_view path, std::string& message);
    void Clear() { m_parameters.clear(); }
    const std::string& Parameters() const { return m_parameters; }

private:
    Files& m_files;
    std::string m_parameters;
};

std::unique_ptr<RunWay> MakeProcessingWay(ProcessingDefaults& defaults);

}  // namespace quirepress
