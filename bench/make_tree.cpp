// make_tree FOLDERS ENTRIES FOLDER: makes a tree to search, always the same for the same numbers.
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>

#include "tree.hpp"

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: make_tree FOLDERS ENTRIES FOLDER\n";
    return 2;
  }
  try {
    korvan::bench::TreeShape const shape{std::strtoull(argv[1], nullptr, 10), std::strtoull(argv[2], nullptr, 10)};
    if (shape.entries < shape.folders) {
      std::cerr << "make_tree: ENTRIES includes the folders and can't be less than FOLDERS\n";
      return 2;
    }
    // Made under another name and then renamed, so that a tree under its own name is always complete.
    std::filesystem::path const root = argv[3];
    std::filesystem::path unfinished = root;
    unfinished += ".unfinished";
    std::filesystem::remove_all(unfinished);
    korvan::bench::makeTree(unfinished, shape);
    std::filesystem::rename(unfinished, root);
  } catch (std::exception const& error) {
    std::cerr << "make_tree: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
