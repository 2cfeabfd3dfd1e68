#include "fakes/child_program/stand_in_converter.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <thread>

#include "base/path.h"
#include "fakes/child_program/start_again.h"

namespace quirepress {

namespace {

std::string ReadText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::string PdfOf(const std::string& content) {
    if (content == "garbage") return "this is no PDF";
    if (content == "cut") return "%PDF-1.4\n";
    if (content == "empty") return "";
    return "%PDF-1.4\n" + content + "\n%%EOF\n";
}

}  // namespace

int RunStandInConverter(const std::vector<std::string>& words) {
    std::ofstream(words.at(0), std::ios::app | std::ios::binary) << words.size() - 2 << '\n';
    const std::string& folder = words.at(1);
    int exitCode = 0;
    for (std::size_t i = 2; i < words.size(); ++i) {
        const std::string content = ReadText(words[i]);
        if (content == "hang") std::this_thread::sleep_for(std::chrono::minutes(1));
        if (content == "crash") std::_Exit(134);
        if (content == "nothing") continue;
        if (content == "chatter") std::cout << std::string(1'000'000, 'x') << std::endl;
        if (content == "leave") {
            StartAgain({"beat", folder + ".beat"}, true);
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }
        if (content == "fail") {
            std::cerr << "something\nis wrong \x1B with it\n";
            exitCode = 3;
        }
        const std::string pdf = JoinPath(folder, std::string(TitleWithoutExtension(words[i])) + ".pdf");
        std::ofstream(pdf, std::ios::binary) << PdfOf(content);
    }
    return exitCode;
}

}  // namespace quirepress
