#pragma once
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One line of an edit script: words between blanks, and settings `key=value` among them. A word or value in double quotes may
/// hold blanks; within, \" and \\ stand for themselves. A line that begins with # is a remark.
struct EditLine {
    std::string command; ///< empty for remarks and blank lines
    std::vector<std::string> words;
    std::map<std::string, std::string> settings;

    /// False with the reason and the column (from 1) in `why`.
    static bool Parse(std::string_view text, EditLine& line, std::string& why);

    /// A finite number.
    static std::optional<double> Number(std::string_view word);
    static std::optional<uint64_t> Whole(std::string_view word);
};
