// Makes the C library's file functions fail.
//
// This program has its own fopen, fread, fseek, ftell and fclose, which call the C library's. For the one file that a
// FileFaults watches they note what is asked and fail as they are told; all other files are let alone.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <vector>

class FileFaults {
 public:
  // Watches the file of this name until the end of the scope; one at a time.
  explicit FileFaults(std::string fileName);
  ~FileFaults();
  FileFaults(const FileFaults&) = delete;
  FileFaults& operator=(const FileFaults&) = delete;

  // Forgets what was noted and told, but not the streams that are open.
  void reset();

  // Opens, seeks and reads are counted from 0, from now on: number None is none of them, Every is each.
  static constexpr long None = -1;
  static constexpr long Every = -2;

  // The open of this number fails with an errno.
  void failOpen(long number, int error);

  // The open of this number succeeds but leaves an errno.
  void spoilErrnoOfOpen(long number, int error);

  // Every fseek on the stream of this open fails.
  void failSeeksOfOpen(long number);

  // Every ftell fails.
  void failTells() { failingTells = true; }

  // The read of this number fails, and all that follow on its stream: bytes come with the first, errno is left.
  void failRead(long number, int error, std::size_t bytes = 0);

  // Every read on the stream of this open fails without a byte and leaves an errno.
  void failReadsOfOpen(long number, int error);

  // No read gives more bytes than this at a time.
  void limitReads(std::size_t bytes) { readLimit = bytes; }

  // Every fclose leaves this errno, and says that it failed.
  void failCloses(int error) { closeError = error; }

  // What was asked.
  const std::vector<std::string>& getModes() const { return modes; }
  long getOpens() const { return static_cast<long>(modes.size()); }
  long getSeeks() const { return seeks; }
  long getReads() const { return reads; }
  long getCloses() const { return closes; }

  // Faults that were met.
  long getFaults() const { return faults; }

  // Streams of the file that are open.
  long getOpenStreams() const { return static_cast<long>(streams.size()); }

  // Called by the file functions.
  static FileFaults* getCurrent() { return current; }
  bool isWatched(const char* name) const { return name != nullptr && fileName == name; }
  bool isWatched(std::FILE* stream) const { return streams.count(stream) > 0; }
  std::FILE* open(const char* name, const char* mode);
  std::size_t read(void* to, std::size_t size, std::size_t count, std::FILE* stream);
  int seek(std::FILE* stream, long offset, int origin);
  long tell(std::FILE* stream);
  int close(std::FILE* stream);

 private:
  struct Stream {
    long open = None;        // the number of its open
    bool hasFailed = false;  // a read did
    long vainReads = 0;      // reads since the end of the file or the failure
  };

  // A stream that was open at the last reset() has no number, and nothing is told of it by number.
  static bool matches(long told, long number) { return told == Every || (told == number && told != None); }

  static FileFaults* current;

  std::string fileName;
  std::map<std::FILE*, Stream> streams;
  std::vector<std::string> modes;
  long seeks = 0;
  long reads = 0;
  long closes = 0;
  long faults = 0;
  long failingOpen = None;
  int openError = 0;
  long spoiledOpen = None;
  int spoiledErrno = 0;
  long failingSeeks = None;
  bool failingTells = false;
  long failingRead = None;
  long failingReadsOfOpen = None;
  int readError = 0;
  std::size_t failingReadBytes = 0;
  std::size_t readLimit = 0;
  int closeError = 0;
};
