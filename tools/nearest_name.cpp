#include "nearest_name.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

namespace plenar_tool {

namespace {

bool SameLetter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

// Letters to insert, remove or exchange, regardless of case.
size_t Distance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t exchanged = diagonal + (SameLetter(a[i], b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string SuggestName(const std::string& given, const std::vector<std::string>& names) {
    std::string nearest;
    size_t fewest = given.size() / 3 + 2;
    for (const std::string& name : names) {
        if (const size_t distance = Distance(given, name); distance < fewest) {
            fewest = distance;
            nearest = name;
        }
    }
    return nearest.empty() ? "" : " (did you mean " + nearest + "?)";
}

std::string JoinNames(const std::vector<std::string>& names, const std::string& lastWord) {
    std::string text;
    for (size_t i = 0; i < names.size(); ++i) {
        text += i == 0 ? "" : i + 1 == names.size() ? " " + lastWord + " " : ", ";
        text += names[i];
    }
    return text;
}

}  // namespace plenar_tool
