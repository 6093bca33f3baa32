// Findings about a data file: what in it is not what it seems, and what the library makes of it.
//
// A library of its own, xelcsv::check, beside the reader library: nothing of the reader library needs it.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "xelcsv/XelEnv.h"

// How bad a finding is. An error makes a call of the library throw, or makes data unreachable or wrong without a word;
// a warning reads, but probably not as it was meant; a note reads as it was meant and is worth knowing.
enum class XelCsvSeverity { Note, Warning, Error };

// "note", "warning" or "error".
const char* XelGetSeverityName(XelCsvSeverity severity) noexcept;

// How the file is to be read: what the constructor of XelCsvReader is told, with the same defaults.
struct XelCsvCheckParameters {
  bool isMultiTable = false;         // whether the file holds many tables, each line beginning with the name of its own
  bool allowTableSplitting = false;  // whether other tables may stand between the lines of one
  std::string separators = ",";      // the characters that end a field, one or several
  char decimal = '.';                // what stands for the point in a number
  char quote = '"';                  // what stands around a text with separators in it
  char comment = '#';                // what a line of comment begins with
};

// One finding. Its place is a stretch of bytes of the file, or the whole file. Whoever shows the excerpt sets a caret
// under its byte offset - excerptOffset, counted from 0, which may be just behind its last.
struct XelCsvFinding {
  const char* code = "";                           // of the catalogue, such as "ragged"; lives for ever
  XelCsvSeverity severity = XelCsvSeverity::Note;  // what the catalogue says, or less where it does less harm
  std::string file;                                // name of the file as it was given
  std::string table;                               // name of the table; empty where there is none
  long lineNumber = -1;  // as the library counts: from 0, a line of more than 9999 bytes as several; -1: the whole file
  long line = 0;         // as people and editors count: 1 for the first line of the file; 0: the whole file
  long column = 0;       // byte in that line, from 1; 0: the whole file
  long offset = 0;       // byte in the file, from 0
  long length = 0;       // bytes that it is about; 0: a place between bytes, or the whole file
  std::string message;   // what is there and what the library does with it, one sentence or two in one line of text
  std::string excerpt;   // bytes of the file around the place, of one line and without its end; may hold any bytes
  long excerptOffset = 0;  // byte in the file of the excerpt's first
};

// Which findings are wanted.
struct XelCsvCheckOptions {
  std::vector<std::string> only;  // codes; all of them when it is empty
  std::vector<std::string> skip;  // codes left out; without "duplicate-key" no keys are kept in memory
  long maxFindings = -1;          // the check ends with this many findings reported; -1: no limit
  long maxAlike = -1;  // findings of one code in one table that are reported, the others are counted; -1: all
};

// Findings of one code in one table that were counted and not reported, because of maxAlike.
struct XelCsvOmitted {
  const char* code = "";  // as in the findings
  std::string table;      // as in the findings
  long count = 0;         // findings that were counted only
};

// What a run says at its end.
struct XelCsvCheckResult {
  long errors = 0;      // findings by severity, the omitted ones included
  long warnings = 0;    // the same
  long notes = 0;       // the same
  long reported = 0;    // findings handed to the caller
  bool isWhole = true;  // false when the caller, maxFindings or text in UTF-16 ended the check before the file's end
  long bytes = 0;       // bytes that were read
  long lines = 0;       // lines as the library counts them
  long tables = 0;      // tables with different names, reserved ones included; 1 for a one-table file
  std::vector<XelCsvOmitted> omitted;  // in the order in which tables had their first finding
};

// Takes a finding; false ends the check. The finding lives for the call.
using XelCsvReport = std::function<bool(const XelCsvFinding&)>;

// Is told how many bytes of the file are done, about once a megabyte; false ends the check.
using XelCsvProgress = std::function<bool(long bytes)>;

// A check of one file: one pass, in memory that does not grow with the file but for the names of its tables and, unless
// "duplicate-key" is skipped, some 20 to 45 bytes for each line of the tables that are not complete yet. In a file with
// table splitting no table is complete before the file's end, and each keeps some bytes per column.
//
//   XelEnv env;
//   XelCsvCheck check(env, "data.csv");
//   check.run([](const XelCsvFinding& finding) {
//     std::cout << finding.line << ": " << finding.message << '\n';
//     return true;
//   });
//   env.end();
//
// Findings come in the order in which they become certain: mostly that of the file; that a number of a column of
// numbers is none is certain only after enough lines, some are only at the table's end. One thread at a time.
class XelCsvCheck {
 public:
  // A check of the file called fileName. Throws what the constructor of XelCsvReader throws for the file's name and the
  // parameters: XelFileNotFoundException, XelCsvReaderParameterException, XelCsvReaderException for a pipe. Throws
  // std::invalid_argument, whose text names the code, for a code in only or skip that the catalogue does not have. The
  // environment must outlive the check.
  XelCsvCheck(XelEnv env, std::string fileName, XelCsvCheckParameters parameters = {}, XelCsvCheckOptions options = {});

  // Reads the file and reports what it finds. May be run again. report must hold a function; progress may be empty.
  // Throws XelFileNotFoundException when the file cannot be opened or read, a folder for example; std::bad_alloc; and
  // whatever the functions throw.
  XelCsvCheckResult run(const XelCsvReport& report, const XelCsvProgress& progress = {}) const;

  // All findings at once, which are the caller's: for files that are small or clean. Throws as run() does.
  std::vector<XelCsvFinding> collect() const;

 private:
  XelEnv env;
  std::string fileName;
  XelCsvCheckParameters parameters;
  XelCsvCheckOptions options;
};

// A small data file and how it is to be read.
struct XelCsvCheckExample {
  std::string bytes;                 // of the whole file
  XelCsvCheckParameters parameters;  // that the reader is told
};

// A kind of finding: an entry of the catalogue. Texts are plain sentences in ASCII without line breaks.
struct XelCsvCheckCode {
  const char* code;                   // its name, such as "ragged"
  XelCsvSeverity severity;            // at worst
  const char* title;                  // a few words, no full stop
  const char* explanation;            // what is in such a file, and how it comes about
  const char* effect;                 // what the library does with it
  const char* remedy;                 // how to mend the file, or read it otherwise
  XelCsvCheckExample example;         // a smallest file that has this finding and no other
  XelCsvCheckExample counterExample;  // one beside it that has no finding
};

// All kinds of findings, in the order in which a text about them should go. Lives for ever.
const std::vector<XelCsvCheckCode>& XelGetCheckCodes();

// The kind with this code, null when there is none.
const XelCsvCheckCode* XelFindCheckCode(std::string_view code);
