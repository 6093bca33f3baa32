// What is printed on std::cout.
#pragma once

#include <iostream>
#include <sstream>
#include <string>

// Takes over std::cout until the end of the scope.
class CoutCapture : private std::stringbuf {
 public:
  CoutCapture() : former(std::cout.rdbuf(this)) {}
  ~CoutCapture() override { std::cout.rdbuf(former); }
  CoutCapture(const CoutCapture&) = delete;
  CoutCapture& operator=(const CoutCapture&) = delete;

  std::string getText() const { return str(); }

  // How often the stream was flushed.
  long getFlushes() const { return flushes; }

 private:
  int sync() override {
    ++flushes;
    return std::stringbuf::sync();
  }

  std::streambuf* former;
  long flushes = 0;
};
