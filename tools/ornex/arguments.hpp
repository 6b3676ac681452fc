#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ornex::tool {

// An option one command accepts: "--name VALUE", "--name=VALUE" or a bare
// "--name" flag. Only a repeatable option may be given more than once.
struct Option {
    std::string name;
    bool takesValue;
    std::string help;
    bool repeatable = false;
};

// A command's arguments: positional ones in order and the options it knows.
// "-h" stands for "--help", "-" is a positional argument (standard input or
// output) and everything after "--" is positional. Anything else is a
// UsageError naming the option as typed.
class Arguments {
public:
    Arguments(const std::vector<std::string> &words, const std::vector<Option> &options);

    const std::vector<std::string> &positional() const { return positional_; }
    bool has(const std::string &name) const { return values_.count(name) != 0; }
    std::string text(const std::string &name, const std::string &fallback) const;
    // Every value of a repeatable option, in the order given.
    std::vector<std::string> all(const std::string &name) const;
    double number(const std::string &name, double fallback) const;
    int32_t integer(const std::string &name, int32_t fallback) const;
    // Comma-separated numbers, exactly `count` of them when count > 0.
    std::vector<double> numbers(const std::string &name, size_t count) const;
    // Refuses `name` together with any of `others`.
    void refuseTogether(const std::string &name, const std::vector<std::string> &others) const;

private:
    std::vector<std::string> positional_;
    std::multimap<std::string, std::string> values_;
};

// "1,2.5,-3" into numbers; `what` names the argument in errors.
std::vector<double> parseNumbers(const std::string &text, const std::string &what);
double parseNumber(const std::string &text, const std::string &what);

// The usage text of a command: its synopsis, a description and one line per
// option.
std::string usage(const std::string &synopsis, const std::string &description, const std::vector<Option> &options);

} // namespace ornex::tool
