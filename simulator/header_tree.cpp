// Matching of command headers.
#include "simulator/header_tree.h"

#include <algorithm>

#include "simulator/number_text.h"

namespace simulator {
namespace {

// Cuts the first word off a header.
std::string_view TakeWord(std::string_view& header) {
  const std::size_t colon = header.find(':');
  const std::string_view word = header.substr(0, colon);
  header = colon == std::string_view::npos ? std::string_view() : header.substr(colon + 1);
  return word;
}

}  // namespace

HeaderTree::HeaderTree() : nodes_(1) {}

void HeaderTree::Add(std::string_view pattern, int command) {
  int node = kRoot;
  while (!pattern.empty()) {
    const std::string_view word = TakeWord(pattern);
    int next = Child(node, word);
    if (next == kNoNode) {
      next = static_cast<int>(nodes_.size());
      const auto lower = std::find_if(word.begin(), word.end(), [](char c) { return c >= 'a' && c <= 'z'; });
      nodes_.push_back({word, static_cast<std::size_t>(lower - word.begin()), kNoCommand, {}});
      nodes_[static_cast<std::size_t>(node)].children.push_back(next);
    }
    node = next;
  }
  nodes_[static_cast<std::size_t>(node)].command = command;
}

HeaderTree::Match HeaderTree::Find(std::string_view header, int path) const {
  if (header.ends_with(':')) return {};
  int above = path;
  int node = path;
  do {
    above = node;
    node = Child(node, TakeWord(header));
    if (node == kNoNode) return {};
  } while (!header.empty());
  return {nodes_[static_cast<std::size_t>(node)].command, above};
}

int HeaderTree::Child(int parent, std::string_view word) const {
  for (const int child : nodes_[static_cast<std::size_t>(parent)].children) {
    const Node& node = nodes_[static_cast<std::size_t>(child)];
    if (word.size() != node.short_size && word.size() != node.word.size()) continue;
    if (EqualInAnyCase(word, node.word.substr(0, word.size()))) return child;
  }
  return kNoNode;
}

}  // namespace simulator
