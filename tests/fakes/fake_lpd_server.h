#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

// A line printer daemon that serves one connection after the other. It knows the protocol strictly: what it
// does not expect it answers with "\x7F" and takes nothing more.
class FakeLpdServer {
public:
    enum class Step { kQueue, kControlCommand, kControlFile, kDataCommand, kData, kOver };
    struct Job {
        std::string queue;
        std::string controlName;
        std::string control;
        std::string dataName;
        std::string data;
        bool operator==(const Job&) const = default;
    };

    // A new connection; of a job that has not come whole nothing stays.
    void Begin();
    // The answers to what has come on this connection.
    std::string Take(std::string_view bytes);

    std::map<Step, std::string> answers;  // other ones than "\0"; an empty one is none
    std::vector<Job> jobs;                // that have come whole
    std::size_t dataBytes = 0;            // of documents, of broken connections too

private:
    bool TakeLine(char command, std::string& operand);
    bool TakeFile(std::string& content);
    bool TakeFileCommand(char command, std::string& name);
    bool DoStep();

    std::string m_input;
    Step m_step = Step::kQueue;
    std::size_t m_size = 0;
    bool m_isWrong = false;
    Job m_job;
};

}  // namespace quirepress
