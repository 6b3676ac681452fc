#include "arguments.hpp"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "tool_error.hpp"

namespace ornex::tool {

Arguments::Arguments(const std::vector<std::string> &words, const std::vector<Option> &options)
{
    for (size_t k = 0; k < words.size(); ++k) {
        const std::string &word = words[k];
        if (word.size() < 3 || word.compare(0, 2, "--") != 0) {
            positional_.push_back(word);
            continue;
        }
        const std::string name = word.substr(2);
        const Option *known = nullptr;
        for (const Option &option : options) {
            if (option.name == name) {
                known = &option;
            }
        }
        if (known == nullptr) {
            throw ToolError("unknown option '" + word + "'");
        }
        if (!known->takesValue) {
            values_[name] = "";
        } else if (k + 1 < words.size()) {
            values_[name] = words[++k];
        } else {
            throw ToolError("option '" + word + "' needs a value");
        }
    }
}

std::string Arguments::text(const std::string &name, const std::string &fallback) const
{
    const auto found = values_.find(name);
    return found == values_.end() ? fallback : found->second;
}

double parseNumber(const std::string &text, const std::string &what)
{
    errno = 0;
    char *end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || end != text.c_str() + text.size() || errno == ERANGE || !std::isfinite(value)) {
        throw ToolError(what + ": expects a number, got '" + text + "'");
    }
    return value;
}

std::vector<double> parseNumbers(const std::string &text, const std::string &what)
{
    std::vector<double> values;
    std::stringstream stream(text);
    std::string item;
    while (std::getline(stream, item, ',')) {
        values.push_back(parseNumber(item, what));
    }
    if (values.empty()) {
        throw ToolError(what + ": expects comma-separated numbers, got '" + text + "'");
    }
    return values;
}

double Arguments::number(const std::string &name, double fallback) const
{
    return has(name) ? parseNumber(text(name, ""), "--" + name) : fallback;
}

int32_t Arguments::integer(const std::string &name, int32_t fallback) const
{
    if (!has(name)) {
        return fallback;
    }
    const double value = parseNumber(text(name, ""), "--" + name);
    if (value != std::floor(value) || std::fabs(value) > 1e9) {
        throw ToolError("--" + name + ": expects a whole number, got '" + text(name, "") + "'");
    }
    return static_cast<int32_t>(value);
}

std::vector<double> Arguments::numbers(const std::string &name, size_t count) const
{
    const std::vector<double> values = parseNumbers(text(name, ""), "--" + name);
    if (count > 0 && values.size() != count) {
        throw ToolError("--" + name + ": expects " + std::to_string(count) + " comma-separated numbers");
    }
    return values;
}

std::string usage(const std::string &synopsis, const std::string &description, const std::vector<Option> &options)
{
    std::string text = "usage: " + synopsis + "\n" + description + "\n";
    if (!options.empty()) {
        text += "options:\n";
    }
    for (const Option &option : options) {
        std::string left = "  --" + option.name + (option.takesValue ? " VALUE" : "");
        left.resize(std::max<size_t>(left.size() + 2, 28), ' ');
        text += left + option.help + "\n";
    }
    return text;
}

} // namespace ornex::tool
