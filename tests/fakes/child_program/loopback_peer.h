#pragma once

#include <string>
#include <vector>

namespace quirepress {

// Accepts one connection on the loopback and says its port on standard output first. The first word says
// what it does then: "echo" sends back what comes until the end, "count" says at the end how many bytes came,
// "hold" never reads, "close" ends at once, "reset" drops the connection, "greet" sends "hello" and ends.
int RunLoopbackPeer(const std::vector<std::string>& words);

}  // namespace quirepress
