#pragma once
#include "Zelvan/Entities/ZvXLine.h"
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Geometry of tests as text. A part is a list of vertices "x,y", "x,y,z" or "x,y,z,m" separated by blanks, "close" at its end for a
/// closed one; parts are separated by ";": "0,0 10,0 10,10 close; 2,2 3,2 3,3 close".
struct TextGeometry {
    std::vector<std::vector<Vec4d>> parts;
    std::vector<bool> closed;
    int dims = 2; ///< most coordinates of a vertex

    TextGeometry(std::string_view text) {
        Begin();
        size_t at = 0;
        while ((at = text.find_first_not_of(' ', at)) != text.npos) {
            const size_t end = std::min(text.find_first_of(" ;", at), text.size());
            if (text[at] == ';') {
                Begin();
                ++at;
                continue;
            }
            const std::string_view word = text.substr(at, end - at);
            if (word == "close")
                closed.back() = true;
            else
                parts.back().push_back(Vertex(std::string(word)));
            at = end;
        }
    }

    std::vector<Vec4d> All() const {
        std::vector<Vec4d> all;
        for (const auto& part : parts)
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }
    std::vector<uint32_t> Table() const {
        std::vector<uint32_t> table;
        uint32_t start = 0;
        for (size_t i = 0; i < parts.size(); ++i) {
            table.push_back(ZvXLine::MakePartEntry(start, closed[i]));
            start += uint32_t(parts[i].size());
        }
        return table;
    }

private:
    void Begin() {
        parts.emplace_back();
        closed.push_back(false);
    }
    Vec4d Vertex(const std::string& word) {
        double v[4] = {};
        int n = 0;
        for (const char* at = word.c_str(); *at && n < 4; ++n) {
            char* end = nullptr;
            v[n] = std::strtod(at, &end);
            if (end == at || (*end && *end != ','))
                throw std::invalid_argument("not a vertex: " + word);
            at = *end ? end + 1 : end;
        }
        dims = std::max(dims, n);
        return {v[0], v[1], v[2], v[3]};
    }
};

inline void SetFromText(ZvXLine& line, std::string_view text, bool polygon = false, int force64 = 0) {
    const TextGeometry g(text);
    const std::vector<Vec4d> all = g.All();
    const std::vector<uint32_t> table = g.Table();
    line.Set(uint32_t(table.size()), table.data(), all, polygon, g.dims > 2, g.dims > 3, force64);
}

inline std::unique_ptr<ZvXLine> LineFromText(std::string_view text, int force64 = 0) {
    auto line = std::make_unique<ZvXLine>();
    SetFromText(*line, text, false, force64);
    return line;
}

/// Its parts are closed whether the text says so or not.
inline std::unique_ptr<ZvXLine> PolygonFromText(std::string_view text, int force64 = 0) {
    auto line = std::make_unique<ZvXLine>();
    SetFromText(*line, text, true, force64);
    line->CloseAllParts();
    return line;
}
