// Matching of command headers: every node in its short or its long form, in any letter case.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace simulator {

/// A tree of header nodes built once from patterns such as "SENSe:ATSC:MEASure", in which the capitals (with
/// digits and underscores) are the short form and the whole word is the long form.
class HeaderTree {
 public:
  static constexpr int kRoot = 0;
  static constexpr int kNoNode = -1;
  static constexpr int kNoCommand = -1;

  HeaderTree();

  /// Files `command` under `pattern`, whose text must outlive the tree.
  void Add(std::string_view pattern, int command);

  struct Match {
    int command = kNoCommand;
    int path = kRoot;  ///< the node above the last one: where the next header of the line may start
  };
  /// Finds `header` (without "?") below `path`.
  Match Find(std::string_view header, int path) const;

 private:
  struct Node {
    std::string_view word;
    std::size_t short_size = 0;
    int command = kNoCommand;
    std::vector<int> children;
  };
  int Child(int parent, std::string_view word) const;

  std::vector<Node> nodes_;
};

}  // namespace simulator
