#include "tools/Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "tools/text/Number.h"

namespace xeltools {

namespace {

constexpr long BytesBetweenLooks = 1 << 20;
constexpr std::chrono::milliseconds Patience(1000);
constexpr std::chrono::milliseconds Pause(200);

std::string formatSeconds(double seconds) {
  const long whole = std::lround(seconds);
  if (whole < 60) return std::to_string(whole) + " s";
  return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
}

}  // namespace

void Progress::begin(long bytes) {
  end();
  total = bytes;
  done = 0;
  nextLook = BytesBetweenLooks;
  start = lastShown = Clock::now();
}

void Progress::look() {
  nextLook = done + BytesBetweenLooks;
  const Clock::time_point now = Clock::now();
  if (now - start < Patience || now - lastShown < Pause) return;
  lastShown = now;
  isShown = true;
  const long shown = std::min(done, total);
  const double seconds = std::chrono::duration<double>(now - start).count();
  const double rate = static_cast<double>(shown) / seconds;
  const double left = rate > 0 ? static_cast<double>(total - shown) / rate : 0;
  const double percent = total > 0 ? 100 * static_cast<double>(shown) / static_cast<double>(total) : 100;
  std::fprintf(stderr, "\r%3.0f %%  %s of %s  %s/s  %s left\x1b[K", percent, formatBytes(shown).c_str(),
               formatBytes(total).c_str(), formatBytes(static_cast<long>(rate)).c_str(), formatSeconds(left).c_str());
}

void Progress::end() {
  if (isShown) std::fputs("\r\x1b[K", stderr);
  isShown = false;
}

}  // namespace xeltools
