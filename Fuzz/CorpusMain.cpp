#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Fuzz/Property.hpp"

namespace {

namespace fs = std::filesystem;

/// The regular files directly in `folder`, in the order of their names; throws where there is none.
std::vector<fs::path> inputsIn(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    if (entry.is_regular_file()) files.push_back(entry.path());
  if (files.empty()) throw std::runtime_error("no input in " + folder.string());
  std::ranges::sort(files);
  return files;
}

tq::Bytes contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + file.string());
  return tq::Bytes(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

}  // namespace

/// Stands in for libFuzzer in the ordinary builds: gives the target every file of its corpus, the folder that is the
/// one argument, and names each before it is read, so that the last one named is the one that failed.
int main(int argc, char** argv) try {
  if (argc != 2) throw std::runtime_error("usage: a folder of inputs");
  for (const fs::path& file : inputsIn(argv[1])) {
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    tq::fuzz::check(contentOf(file));
  }
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
