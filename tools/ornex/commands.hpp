#pragma once

#include <string>
#include <vector>

namespace ornex::tool {

// Each command takes the words after its name and returns the exit code;
// problems with the input are thrown as ToolError.
int runDemo(const std::vector<std::string> &words);
int runEdges(const std::vector<std::string> &words);
int runLines(const std::vector<std::string> &words);
int runMotion(const std::vector<std::string> &words);
int runFlow(const std::vector<std::string> &words);
int runWarp(const std::vector<std::string> &words);
int runShear(const std::vector<std::string> &words);
int runDraw(const std::vector<std::string> &words);

} // namespace ornex::tool
