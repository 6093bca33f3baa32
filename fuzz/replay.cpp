// Runs a fuzz target over the files of the given folders, or over the given files, without a fuzzer: any compiler builds
// it, and a property that fails aborts as it does under the fuzzer.
#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

// NOLINTNEXTLINE(readability-identifier-naming): the name that the fuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Path = std::filesystem::path;

// The input that is replayed, to be named when a property of it fails, which aborts.
const char* volatile current = nullptr;

void nameInput(int) {
  std::fprintf(stderr, "replaying %s\n", current);
  std::_Exit(1);
}

std::vector<Path> findInputs(const Path& place) {
  std::vector<Path> inputs;
  if (!std::filesystem::is_directory(place)) {
    inputs.push_back(place);
    return inputs;
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(place)) {
    if (entry.is_regular_file()) inputs.push_back(entry.path());
  }
  std::sort(inputs.begin(), inputs.end());
  return inputs;
}

void replay(const Path& input) {
  std::ifstream stream(input, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + input.string());
  const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
  // A copy of exactly the input's size, so that a sanitizer sees what reads beyond it.
  const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
  current = input.c_str();
  LLVMFuzzerTestOneInput(data.data(), data.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGABRT, nameInput);
  try {
    long count = 0;
    for (int argument = 1; argument < argc; ++argument) {
      for (const Path& input : findInputs(argv[argument])) {
        replay(input);
        ++count;
      }
    }
    std::printf("%ld inputs replayed\n", count);
    return count > 0 ? 0 : 1;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "%s\n", exception.what());
    return 1;
  }
}
