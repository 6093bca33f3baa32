// Makes the C library's file functions fail.
//
// This program has its own fopen, fread, fseek, ftell, fclose, setvbuf and stat, which call the C library's. For the one
// file that a FileFaults watches they note what is asked and fail as they are told; all other files are let alone. The
// library calls nothing else that can fail: feof, ferror and clearerr only look at a stream.
#pragma once

#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

struct stat;

// The functions that can fail.
enum class FileCall { Open, Read, Seek, Tell, Close, SetBuffer, Status };
constexpr std::size_t NumberOfFileCalls = 7;

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

  // The call of this number, counted from 0 for each function, fails with an errno; with forEver all later ones too.
  // What fails to close closes all the same. A failing read gives no byte.
  void fail(FileCall call, long number, bool forEver, int error);

  // The open of this number opens another file in place of the watched one, which ends where the watched one is not to
  // be read any more; its size is told as the watched one's. With all later ones the file that stands in later is opened.
  // Without, the stream is the watched file's again at the first seek, its end once met, that goes as far as back.
  struct StandIn {
    long open = None;
    std::string first;
    std::string later;  // empty: only one open is stood in for
    long size = 0;      // of the watched file
    long back = 0;
  };
  void setStandIn(StandIn newStandIn) { standIn = std::move(newStandIn); }

  // Where the first read that was told to fail by fail() stood.
  struct FailedRead {
    long open = None;
    long offset = 0;
  };
  const FailedRead& getFailedRead() const { return failedRead; }

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
  long getSeeks() const { return getCalls(FileCall::Seek); }
  long getReads() const { return getCalls(FileCall::Read); }
  long getCloses() const { return getCalls(FileCall::Close); }
  long getCalls(FileCall call) const { return calls[static_cast<std::size_t>(call)]; }

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
  int setBuffer(std::FILE* stream, char* buffer, int mode, std::size_t size);
  int getStatus(const char* name, struct stat* status);

 private:
  struct Stream {
    long open = None;        // the number of its open
    bool hasFailed = false;  // a read did
    long vainReads = 0;      // reads since the end of the file or the failure
    bool isStandIn = false;
    bool hasEnded = false;  // a stand-in's end was met
  };

  // A stream that was open at the last reset() has no number, and nothing is told of it by number.
  static bool matches(long told, long number) { return told == Every || (told == number && told != None); }

  // Counts a call and says whether it fails.
  bool meets(FileCall call);
  void countFault();

  static FileFaults* current;

  std::string fileName;
  std::map<std::FILE*, Stream> streams;
  std::vector<std::string> modes;
  std::array<long, NumberOfFileCalls> calls{};
  FileCall failingCall = FileCall::Open;
  long failingNumber = None;
  bool isForEver = false;
  int callError = 0;
  StandIn standIn;
  FailedRead failedRead;
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
