// Reads the reference tables in tests/data: comma-separated rows, one case a line. Lines that
// are empty or start with '#' are comments; the first other line names the columns.
#ifndef QV5_TESTS_SUPPORT_CSV_TABLE_H
#define QV5_TESTS_SUPPORT_CSV_TABLE_H

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace qv5::test {

/// One row of a table, read by column name.
class CsvRow {
public:
    CsvRow(const std::map<std::string, std::size_t>* columns, std::vector<std::string> cells)
        : m_columns(columns), m_cells(std::move(cells)) {}

    /// The cell of `column`, as written.
    const std::string& text(const std::string& column) const {
        const auto found = m_columns->find(column);
        if (found == m_columns->end() || found->second >= m_cells.size()) {
            throw std::runtime_error("table has no column " + column);
        }
        return m_cells[found->second];
    }

    /// The cell of `column` as a number (a full decimal or exponent literal).
    double number(const std::string& column) const {
        const std::string& cell = text(column);
        char* end = nullptr;
        const double value = std::strtod(cell.c_str(), &end);
        if (cell.empty() || end != cell.c_str() + cell.size()) {
            throw std::runtime_error("not a number in column " + column + ": " + cell);
        }
        return value;
    }

    /// True when the cell of `column` is empty (the check it stands for is not made).
    bool empty(const std::string& column) const { return text(column).empty(); }

private:
    const std::map<std::string, std::size_t>* m_columns;
    std::vector<std::string> m_cells;
};

/// A whole table: the column names and the rows, in file order.
class CsvTable {
public:
    /// Reads tests/data/<name>; throws when the file cannot be read.
    explicit CsvTable(const std::string& name) {
        std::ifstream in(std::string(QV5_TEST_DATA_DIR) + "/" + name);
        if (!in) {
            throw std::runtime_error("cannot read tests/data/" + name);
        }
        std::string line;
        bool header = true;
        while (std::getline(in, line)) {
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            if (line.empty() || line[0] == '#') {
                continue;
            }
            std::vector<std::string> cells = split(line);
            if (header) {
                for (std::size_t i = 0; i < cells.size(); ++i) {
                    m_columns[cells[i]] = i;
                }
                header = false;
                continue;
            }
            m_rows.emplace_back(&m_columns, std::move(cells));
        }
    }

    CsvTable(const CsvTable&) = delete;
    CsvTable& operator=(const CsvTable&) = delete;

    const std::vector<CsvRow>& rows() const { return m_rows; }

private:
    static std::vector<std::string> split(const std::string& line) {
        std::vector<std::string> cells;
        std::stringstream stream(line);
        std::string cell;
        while (std::getline(stream, cell, ',')) {
            const auto first = cell.find_first_not_of(' ');
            const auto last = cell.find_last_not_of(' ');
            cells.push_back(first == std::string::npos ? std::string()
                                                       : cell.substr(first, last - first + 1));
        }
        if (!line.empty() && line.back() == ',') {
            cells.emplace_back();
        }
        return cells;
    }

    std::map<std::string, std::size_t> m_columns;
    std::vector<CsvRow> m_rows;
};

} // namespace qv5::test

#endif // QV5_TESTS_SUPPORT_CSV_TABLE_H
