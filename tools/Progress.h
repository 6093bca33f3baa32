// How far a long work is.
#pragma once

#include <chrono>

namespace xeltools {

// A line on standard error that says how many bytes are done, how fast it goes and how long it will take; not before a
// second has gone, and only where people see it.
class Progress {
 public:
  // Says something only when it is visible.
  explicit Progress(bool visible) : isVisible(visible) {}
  ~Progress() { end(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // A work of so many bytes begins.
  void begin(long bytes);

  // So many bytes more are done.
  void advance(long bytes) {
    done += bytes;
    if (isVisible && done >= nextLook) look();
  }

  // Takes the line away.
  void end();

 private:
  using Clock = std::chrono::steady_clock;

  void look();

  bool isVisible;
  bool isShown = false;
  long total = 0;
  long done = 0;
  long nextLook = 0;  // the clock is looked at when so many bytes are done
  Clock::time_point start;
  Clock::time_point lastShown;
};

}  // namespace xeltools
