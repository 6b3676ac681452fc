#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ornex::tool {

// The options one command accepts: "--name value" or a bare "--name" flag.
struct Option {
    std::string name;
    bool takesValue;
    std::string help;
};

// A command's arguments: positional ones in order and the options it knows;
// anything else is a ToolError naming the argument.
class Arguments {
public:
    Arguments(const std::vector<std::string> &words, const std::vector<Option> &options);

    const std::vector<std::string> &positional() const { return positional_; }
    bool has(const std::string &name) const { return values_.count(name) != 0; }
    std::string text(const std::string &name, const std::string &fallback) const;
    double number(const std::string &name, double fallback) const;
    int32_t integer(const std::string &name, int32_t fallback) const;
    // Comma-separated numbers, exactly `count` of them when count > 0.
    std::vector<double> numbers(const std::string &name, size_t count) const;

private:
    std::vector<std::string> positional_;
    std::map<std::string, std::string> values_;
};

// "1,2.5,-3" into numbers; `what` names the argument in errors.
std::vector<double> parseNumbers(const std::string &text, const std::string &what);
double parseNumber(const std::string &text, const std::string &what);

// The usage text of a command: its synopsis, a line of description and one
// line per option.
std::string usage(const std::string &synopsis, const std::string &description, const std::vector<Option> &options);

} // namespace ornex::tool
