#include "storage/conformance_tree.hpp"

#include <fstream>
#include <stdexcept>

namespace korvan::test {
namespace {

std::string percentDecoded(std::string const& text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      decoded += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}

std::vector<std::string> readKeys() {
  std::ifstream file(KORVAN_CONFORMANCE_TREE);
  if (!file) throw std::runtime_error("can't read " KORVAN_CONFORMANCE_TREE);
  std::vector<std::string> keys;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') keys.push_back(percentDecoded(line));
  }
  return keys;
}

}  // namespace

std::vector<std::string> const& conformanceKeys() {
  static std::vector<std::string> const keys = readKeys();
  return keys;
}

Tree conformanceTree() {
  Tree tree;
  for (std::string const& key : conformanceKeys()) {
    if (key.back() == '/') {
      tree.addFolder(key.substr(0, key.size() - 1));
    } else {
      tree.addFile(key);
    }
  }
  return tree;
}

}  // namespace korvan::test
