#include "arguments.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "tool_error.hpp"

namespace ornex::tool {
namespace {

const Option *find(const std::vector<Option> &options, const std::string &name)
{
    const auto found = std::ranges::find(options, name, &Option::name);
    return found == options.end() ? nullptr : &*found;
}

} // namespace

Arguments::Arguments(const std::vector<std::string> &words, const std::vector<Option> &options)
{
    bool onlyPositional = false;
    for (size_t k = 0; k < words.size(); ++k) {
        const std::string &word = words[k];
        if (onlyPositional || word == "-" || !word.starts_with('-')) {
            positional_.push_back(word);
            continue;
        }
        if (word == "--") {
            onlyPositional = true;
            continue;
        }
        const bool isLong = word.starts_with("--");
        const size_t equals = isLong ? word.find('=') : std::string::npos;
        const std::string typed = word.substr(0, equals);
        const std::string name = word == "-h" ? "help" : isLong ? typed.substr(2) : "";
        const Option *known = find(options, name);
        if (known == nullptr) {
            throw UsageError("unknown option '" + typed + "'");
        }
        if (has(name) && !known->repeatable) {
            throw UsageError(typed + ": given more than once");
        }
        if (!known->takesValue) {
            if (equals != std::string::npos) {
                throw UsageError(typed + ": takes no value");
            }
            values_.emplace(name, "");
        } else if (equals != std::string::npos) {
            values_.emplace(name, word.substr(equals + 1));
        } else if (k + 1 < words.size()) {
            values_.emplace(name, words[++k]);
        } else {
            throw UsageError(typed + ": needs a value");
        }
    }
}

std::string Arguments::text(const std::string &name, const std::string &fallback) const
{
    const auto found = values_.find(name);
    return found == values_.end() ? fallback : found->second;
}

std::vector<std::string> Arguments::all(const std::string &name) const
{
    std::vector<std::string> values;
    const auto [first, last] = values_.equal_range(name);
    for (auto it = first; it != last; ++it) {
        values.push_back(it->second);
    }
    return values;
}

double parseNumber(const std::string &text, const std::string &what)
{
    errno = 0;
    char *end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || end != text.c_str() + text.size() || errno == ERANGE || !std::isfinite(value)) {
        throw UsageError(what + ": expects a number, got '" + text + "'");
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
        throw UsageError(what + ": expects comma-separated numbers, got '" + text + "'");
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
        throw UsageError("--" + name + ": expects a whole number, got '" + text(name, "") + "'");
    }
    return static_cast<int32_t>(value);
}

std::vector<double> Arguments::numbers(const std::string &name, size_t count) const
{
    const std::vector<double> values = parseNumbers(text(name, ""), "--" + name);
    if (count > 0 && values.size() != count) {
        throw UsageError("--" + name + ": expects " + std::to_string(count) + " comma-separated numbers");
    }
    return values;
}

void Arguments::refuseTogether(const std::string &name, const std::vector<std::string> &others) const
{
    for (const std::string &other : others) {
        if (has(name) && has(other)) {
            throw UsageError("--" + name + " and --" + other + " contradict each other; give one of them");
        }
    }
}

std::string usage(const std::string &synopsis, const std::string &description, const std::vector<Option> &options)
{
    std::string text = "usage: " + synopsis + "\n" + description + "\n";
    if (!options.empty()) {
        text += "options (--name VALUE or --name=VALUE):\n";
    }
    for (const Option &option : options) {
        std::string left = (option.name == "help" ? "  -h, --" : "  --") + option.name + (option.takesValue ? " VALUE" : "");
        left.resize(std::max<size_t>(left.size() + 2, 28), ' ');
        text += left + option.help + (option.repeatable ? " (may be repeated)" : "") + "\n";
    }
    return text;
}

} // namespace ornex::tool
