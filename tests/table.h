// Cases in files of tests/data/: a line each, fields behind tabs, under the names in the first line.
#pragma once

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "testing/sample_model.h"

namespace plenar_test {

class TableRow {
public:
    TableRow(std::istringstream names, std::istringstream fields) {
        std::string name;
        std::string field;
        while (std::getline(names, name, '\t') && std::getline(fields, field, '\t')) {
            texts_[name] = field;
        }
    }

    const std::string& Text(const std::string& name) const { return texts_.at(name); }
    uint32_t Number(const std::string& name) const { return static_cast<uint32_t>(std::stoul(Text(name))); }
    uint8_t Byte(const std::string& name) const { return static_cast<uint8_t>(Number(name)); }
    // By name, or a number that may be none.
    uint32_t Order() const { return NumberOf("order", OrderName); }
    uint32_t Type() const { return NumberOf("type", TypeName); }

private:
    template <class NameOf>
    uint32_t NumberOf(const std::string& name, const NameOf& nameOf) const {
        for (uint32_t number = 0; number < 256; ++number) {
            if (nameOf(number) == Text(name)) {
                return number;
            }
        }
        return Number(name);
    }

    std::map<std::string, std::string> texts_;
};

inline std::vector<TableRow> ReadTable(const std::string& file) {
    std::ifstream table(PLENAR_TEST_DATA "/" + file);
    std::vector<TableRow> rows;
    std::string names;
    std::getline(table, names);
    for (std::string line; std::getline(table, line);) {
        rows.emplace_back(std::istringstream(names), std::istringstream(line));
    }
    if (rows.empty()) {
        throw std::runtime_error("no cases in " + file);
    }
    return rows;
}

}  // namespace plenar_test
