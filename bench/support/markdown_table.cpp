// Printing of Markdown tables and cell formatting.
#include "support/markdown_table.hpp"

#include <algorithm>
#include <cstdarg>

namespace tav::bench {

void markdown_table::print(std::FILE* out) const {
  std::vector<size_t> width(header_.size(), 3);
  for (size_t c = 0; c < header_.size(); ++c) width[c] = std::max(width[c], header_[c].size());
  for (const auto& row : rows_)
    for (size_t c = 0; c < row.size() && c < width.size(); ++c) width[c] = std::max(width[c], row[c].size());
  auto line = [&](const std::vector<std::string>& cells) {
    for (size_t c = 0; c < width.size(); ++c)
      std::fprintf(out, "| %-*s ", static_cast<int>(width[c]), c < cells.size() ? cells[c].c_str() : "");
    std::fprintf(out, "|\n");
  };
  line(header_);
  for (size_t c = 0; c < width.size(); ++c) std::fprintf(out, "|%s", std::string(width[c] + 2, '-').c_str());
  std::fprintf(out, "|\n");
  for (const auto& row : rows_) line(row);
}

std::string format(const char* pattern, ...) {
  char buffer[128];
  va_list args;
  va_start(args, pattern);
  std::vsnprintf(buffer, sizeof buffer, pattern, args);
  va_end(args);
  return buffer;
}

}  // namespace tav::bench
