#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quirepress {

class PrintList;

// {"columns": [19 texts], "kind": ...}.
nlohmann::json RowToJson(const PrintList& list, int row);
nlohmann::json RowsToJson(const PrintList& list);

// The rows as a table for people.
std::string RenderRows(const PrintList& list, bool colours);

}  // namespace quirepress
