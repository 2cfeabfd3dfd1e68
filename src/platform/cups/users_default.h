#pragma once

#include <string>
#include <string_view>

namespace quirepress {

class Files;

// The default printer that this user has chosen, "NAME" or "NAME/INSTANCE"; empty when he has chosen none.
// libcups tells what the default is, but not whose choice, so the user's own file is read: "lpoptions" in
// ".cups" in the home folder.
std::string ReadUsersDefault(Files& files);

// The same out of the text of such a file.
std::string FindDefaultInOptions(std::string_view options);

}  // namespace quirepress
