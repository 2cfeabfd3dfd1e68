#pragma once

#include <string_view>

namespace quirepress {

struct ListWorkload {
    int rows = 0;
    double seconds = 0;      // processor time of the insertion
    double bytesPerRow = 0;  // what the heap has grown by, its own overhead included
    double sortSeconds = 0;  // processor time of the sort by title
};

// Makes `count` small text files in `folder` (made when missing). True when they are all there.
bool MakeSmallFiles(std::string_view folder, int count);

// Inserts the folder into a new list and sorts it.
ListWorkload InsertFolderIntoList(std::string_view folder);

}  // namespace quirepress
