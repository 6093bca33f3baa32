// A program outside the project: writes a small data file, reads it with the installed library and checks the answers.
#include <xelcsv/XelCsvReader.h>

#include <cstdio>
#include <cstring>
#include <fstream>

namespace {

int failures = 0;

void check(bool isRight, const char* what) {
  if (!isRight) {
    std::printf("wrong: %s\n", what);
    ++failures;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: %s FILE\n", argv[0]);
    return 2;
  }
  const char* name = argv[1];
  std::ofstream(name) << "|NAMES,product,price,stock\n"
                      << "|KEYS,1,0,0\n"
                      << "apple,1.25,100\n"
                      << "pear,2.5,\n";

  XelEnv env;
  {
    XelCsvReader reader(env, name);
    XelCsvLine apple = reader.getLineByKey(1, "apple");
    check(apple.getFloatByHeader("price") == 1.25, "the price of an apple");
    check(apple.getIntByHeader("stock") == 100, "the stock of apples");
    XelCsvLine pear = reader.getLineByNumber(1);
    check(std::strcmp(pear.getStringByPosition(0), "pear") == 0, "the name of the second product");
    check(pear.getIntByHeaderOrDefaultValue("stock", -1) == -1, "the default of an empty field");

    // Exceptions come across the border of the library.
    bool isThrown = false;
    try {
      reader.getLineByKey(1, "plum");
    } catch (const XelCsvReader::XelLineNotFoundException&) {
      isThrown = true;
    }
    check(isThrown, "the exception for a missing line");
    isThrown = false;
    try {
      XelCsvReader missing(env, "no such file");
    } catch (const XelQuietException& exception) {
      isThrown = std::strstr(exception.what(), "no such file") != nullptr;
    }
    check(isThrown, "the exception for a missing file, caught by its base");
    reader.end();
  }
  env.end();

  std::printf("xelcsv %s: %s\n", XELCSV_VERSION, failures == 0 ? "all right" : "wrong");
  return failures == 0 ? 0 : 1;
}
