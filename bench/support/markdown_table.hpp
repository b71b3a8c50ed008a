// A table printed as Markdown, columns padded to their widest cell, so that the output reads
// well on a terminal and pastes unchanged into RESULTS.md.
#pragma once

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace tav::bench {

class markdown_table {
 public:
  explicit markdown_table(std::vector<std::string> header) : header_(std::move(header)) {}
  void add_row(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
  void print(std::FILE* out) const;

 private:
  std::vector<std::string> header_;
  std::vector<std::vector<std::string>> rows_;
};

// printf-style formatting into a string, for table cells.
std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

}  // namespace tav::bench
