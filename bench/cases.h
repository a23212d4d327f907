// What is measured: operator words with operands of many sizes.
#pragma once

#include <string>
#include <vector>

namespace omrel::bench {

// One call of the command: its texts behind "big", and the value of the variable x.
struct Case {
  std::string word;
  std::string size;  // as the table shows it: "3249 x 18"
  std::vector<std::string> operands;
  std::string variable{};
};

std::vector<Case> all_cases();

}  // namespace omrel::bench
