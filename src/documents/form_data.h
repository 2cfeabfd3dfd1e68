#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class Files;
class InputFile;

// What a file of forms data says.
struct FormData {
    struct Field {
        std::string name;                 // in full, its parts joined by "."
        std::vector<std::string> values;  // UTF-8; several of a list of choices
    };
    std::vector<Field> fields;
    // Names follow the elements of a tree: "#..." parts of a form's own names are left out, and a number
    // stands only behind the second and further of equal names, "row[1]".
    bool isTree = false;
    std::string form;          // as it is named; empty: it is not
    std::string embeddedForm;  // the bytes of a form that came along
};

// By its name (".xfdf", ".xdp") or by its begin ("%FDF").
bool IsFormData(Files& files, std::string_view path);

// False with `flaw`, a sentence part; `data` may be half filled then. A hostile file takes time and memory:
// let it run in a worker.
bool ReadFormData(Files& files, std::string_view path, FormData& data, std::string& flaw);

// The two of them: XFDF and XDP, and FDF.
bool ReadXmlFormData(InputFile& file, FormData& data, std::string& flaw);
bool ReadFdfFormData(InputFile& file, FormData& data, std::string& flaw);

constexpr std::size_t kMostFormFields = 100'000;
constexpr int kDeepestFormField = 100;  // parts of a name

}  // namespace quirepress
