#include "Apps/zvd/EditLine.h"
#include <charconv>
#include <cmath>

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

/// Reads one word, quotes taken off. `setting`: where its first = outside quotes stands in `word`, npos when it has none.
class WordReader {
public:
    explicit WordReader(std::string_view text) : m_text(text) {}

    /// False at the end, and with the reason in `why` for a quote without end.
    bool Next(std::string& word, size_t& setting, std::string& why) {
        while (m_at < m_text.size() && IsBlank(m_text[m_at]))
            ++m_at;
        if (m_at == m_text.size())
            return false;
        word.clear();
        setting = std::string::npos;
        for (; m_at < m_text.size() && !IsBlank(m_text[m_at]); ++m_at) {
            if (m_text[m_at] == '"') {
                if (!Quoted(word, why))
                    return false;
                continue;
            }
            if (m_text[m_at] == '=' && setting == std::string::npos)
                setting = word.size();
            word += m_text[m_at];
        }
        return true;
    }

private:
    bool Quoted(std::string& word, std::string& why) {
        const size_t start = m_at++;
        for (; m_at < m_text.size() && m_text[m_at] != '"'; ++m_at) {
            if (m_text[m_at] == '\\' && m_at + 1 < m_text.size())
                ++m_at;
            word += m_text[m_at];
        }
        if (m_at < m_text.size())
            return true;
        why = "the quote in column " + std::to_string(start + 1) + " has no end: add \"";
        return false;
    }

    std::string_view m_text;
    size_t m_at = 0;
};

} // namespace

bool EditLine::Parse(std::string_view text, EditLine& line, std::string& why) {
    line = {};
    why.clear();
    const size_t start = text.find_first_not_of(" \t\r");
    if (start == std::string_view::npos || text[start] == '#')
        return true;
    WordReader reader(text);
    std::string word;
    for (size_t setting = 0; reader.Next(word, setting, why);) {
        if (line.command.empty())
            line.command = word;
        else if (setting == std::string::npos || setting == 0)
            line.words.push_back(word);
        else if (!line.settings.emplace(word.substr(0, setting), word.substr(setting + 1)).second)
            why = "'" + word.substr(0, setting) + "' is set twice: leave one";
    }
    return why.empty();
}

std::optional<double> EditLine::Number(std::string_view word) {
    double value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<uint64_t> EditLine::Whole(std::string_view word) {
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size())
        return std::nullopt;
    return value;
}
