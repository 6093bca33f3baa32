// Comfort for C++17 programs: a guard that ends handles, range-for over lines and tables, lookups by keys of any type
// that need no count, and lookups that answer 'none'. A header and nothing else: the library knows nothing of it, and a
// program that does not use it pays nothing.
//
//   XelScoped<XelEnv> env;
//   XelScoped<XelCsvReader> reader(env, "transport.csv", 1);
//   XelScoped table(reader->getTableByName("routes"));
//   for (const XelCsvLine& line : XelLines(table)) use(line);
//   if (std::optional<XelCsvLine> route = XelFindLine(table, "Seattle", std::string("Topeka"))) use(*route);
#pragma once

#include <charconv>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "xelcsv/XelCsvReader.h"

// ---- Ends.

// Owner of a handle, that is of anything with an operation end(): XelEnv, XelCsvReader, a table from getTableByName, a
// line made by copy(). Ends it at the end of the scope, on every way out. Declared after what the handle needs, it is
// ended before that: declare the environment first, then the reader, then its tables.
//
// The guard stands for its handle: what takes a handle takes the guard too. A copy of the handle shares what is behind
// it and is void when the guard has ended. What the guard ends nothing else may end, so give it a handle of its own.
// Moving hands the handle on; there is no copying. Costs one call of end().
template <class Handle>
class XelScoped final {
 public:
  // A handle made without arguments: a new environment, or an empty handle of the other kinds.
  XelScoped() = default;

  // A handle made of the arguments; throws what its constructor throws. A handle that is given is taken over.
  template <class... Arguments,
            class = std::enable_if_t<(sizeof...(Arguments) > 0) &&
                                     !std::disjunction_v<std::is_same<std::decay_t<Arguments>, XelScoped>...> &&
                                     std::is_constructible_v<Handle, Arguments...>>>
  explicit XelScoped(Arguments&&... arguments) noexcept(std::is_nothrow_constructible_v<Handle, Arguments...>)
      : handle(std::forward<Arguments>(arguments)...) {}

  // Takes over the handle of another guard, whose own is empty afterwards.
  XelScoped(XelScoped&& other) noexcept : handle(other.release()) {}

  // The same; the handle of this guard is ended first.
  XelScoped& operator=(XelScoped&& other) noexcept {
    if (this == &other) return *this;
    handle.end();
    handle = other.release();
    return *this;
  }

  XelScoped(const XelScoped&) = delete;
  XelScoped& operator=(const XelScoped&) = delete;

  // Ends the handle; an empty one, or one that was ended before by its own end(), comes to no harm.
  ~XelScoped() { handle.end(); }

  // The handle itself; it lives as long as the guard.
  Handle& operator*() noexcept { return handle; }
  const Handle& operator*() const noexcept { return handle; }
  Handle* operator->() noexcept { return &handle; }
  const Handle* operator->() const noexcept { return &handle; }

  // The same for functions that take the handle. A guard that is about to die gives nothing away.
  operator Handle&() & noexcept { return handle; }
  operator const Handle&() const& noexcept { return handle; }
  operator Handle&() && = delete;
  operator const Handle&() const&& = delete;

  // Lets the handle go, which the caller ends from now on. The guard's own is empty afterwards.
  [[nodiscard]] Handle release() noexcept { return std::exchange(handle, makeEmpty()); }

 private:
  static Handle makeEmpty() noexcept {
    if constexpr (std::is_constructible_v<Handle, std::nullptr_t>) {
      return Handle(nullptr);  // an environment made without arguments would not be empty
    } else {
      return Handle();
    }
  }

  Handle handle;
};

// The kind of a handle that is given need not be said: XelScoped table(reader.getTableByName("routes")).
template <class Handle>
XelScoped(Handle) -> XelScoped<Handle>;

// ---- Walks.

// Iterator of XelLines and XelTables: an input iterator. Copies share one walk, and ++ of one moves them all; it++
// copies the line or table that it answers, so write ++it.
template <class Range>
class XelRangeIterator {
 public:
  // The types that the standard library asks an iterator for.
  using iterator_category = std::input_iterator_tag;
  using value_type = typename Range::value_type;
  using reference = typename Range::reference;
  using pointer = std::add_pointer_t<reference>;
  using difference_type = std::ptrdiff_t;

  // What *it++ answers: a copy of the line or table, which lives as long as this object.
  class Former {
   public:
    // Copies the line or table; throws what its copy() throws.
    explicit Former(const value_type& current) { copied->copy(current); }

    // The copy, which belongs to this object.
    const value_type& operator*() const noexcept { return *copied; }

   private:
    XelScoped<value_type> copied;
  };

  // The end of any walk.
  XelRangeIterator() = default;

  // Where the walk of the range stands; for the range alone, which must outlive the iterator.
  explicit XelRangeIterator(Range* walked) : range(walked) {}

  // The current line or table, lent until the next ++.
  reference operator*() const { return range->current; }
  pointer operator->() const { return &range->current; }

  // Goes on. Throws what ++ of the classic iterator throws.
  XelRangeIterator& operator++() {
    range->next();
    return *this;
  }

  // Goes on, and answers a copy of where the walk stood; throws also what copy() of the line or table throws.
  Former operator++(int) {
    Former former(range->current);
    range->next();
    return former;
  }

  // Whether both are at the end, or both stand in the same walk.
  bool operator==(const XelRangeIterator& other) const { return isAtEnd() ? other.isAtEnd() : range == other.range; }
  bool operator!=(const XelRangeIterator& other) const { return !(*this == other); }

 private:
  bool isAtEnd() const { return range == nullptr || !range->isOk(); }

  Range* range = nullptr;
};

// The lines of a table, in the order of the file:
//
//   for (const XelCsvLine& line : XelLines(table)) use(line);
//
// A walk as by XelCsvTableReader::LineIterator, with its costs and exceptions and the lifetime of its lines: a line is
// lent until the next ++. The table must outlive this object; ending the object, or coming to the end of the lines,
// closes the file. One walk at a time: begin() starts again at the first line.
class XelLines {
 public:
  // What a walk yields, how, and by which iterator.
  using value_type = XelCsvLine;
  using reference = const XelCsvLine&;
  using iterator = XelRangeIterator<XelLines>;

  // The lines of a table. Opens nothing yet.
  explicit XelLines(const XelCsvTableReader& walked) : table(walked.getImpl()) {}

  // The lines of a one-table file. Throws XelIncorrectCsvReaderUseException on a file of several tables.
  explicit XelLines(const XelCsvReader& reader) : table(reader.getReaderForUniqueTableFile()) {}

  // A table that nobody keeps would have nobody to end it.
  explicit XelLines(const XelCsvTableReader&&) = delete;
  explicit XelLines(const XelCsvReader&&) = delete;

  XelLines(const XelLines&) = delete;
  XelLines& operator=(const XelLines&) = delete;
  ~XelLines() = default;

  // Opens the file and stands on the first line. Throws what the constructor of the classic iterator throws.
  iterator begin() {
    current = XelCsvLine();
    walk = nullptr;
    walk = &place.emplace(table);
    current = **walk;
    return iterator(this);
  }

  // Where every walk ends.
  iterator end() noexcept { return iterator(); }

 private:
  friend iterator;

  bool isOk() const { return walk != nullptr && walk->ok(); }

  void next() {
    current = XelCsvLine();
    ++*walk;
    current = **walk;
  }

  XelCsvTableReader table;
  // Where the walk is made, for assigning one would open the file twice.
  std::optional<XelCsvTableReader::LineIterator> place;
  XelCsvTableReader::LineIterator* walk = nullptr;  // null before the first begin()
  XelCsvLine current;
};

// The tables of a file of several tables, in the order of the file; the reserved ones at its start are left out:
//
//   for (XelCsvTableReader& table : XelTables(reader)) use(table);
//
// A walk as by XelCsvReader::TableIterator, with its costs and exceptions: a table, with the last line that was looked
// up through it, is lent until the next ++. Take tables by reference: a line that is looked up through a copy of the
// handle stays in memory until the copy is ended. The reader must outlive this object. One walk at a time: begin()
// starts again at the first table. After an exception of ++ the walk stands on no table, and the next ++ goes on behind
// the table that could not be made.
class XelTables {
 public:
  // What a walk yields, how, and by which iterator.
  using value_type = XelCsvTableReader;
  using reference = XelCsvTableReader&;
  using iterator = XelRangeIterator<XelTables>;

  // The tables of a file. Opens nothing yet.
  explicit XelTables(const XelCsvReader& walked) : reader(walked.getImpl()) {}

  // A reader that nobody keeps would have nobody to end it.
  explicit XelTables(const XelCsvReader&&) = delete;

  XelTables(const XelTables&) = delete;
  XelTables& operator=(const XelTables&) = delete;
  ~XelTables() { current.end(); }

  // Stands on the first table. Throws what the constructor of the classic iterator throws:
  // XelIncorrectCsvReaderUseException on a one-table file, and what getTableByName throws for the table.
  iterator begin() {
    current.end();
    walk = nullptr;
    walk = &place.emplace(reader);
    current = **walk;
    return iterator(this);
  }

  // Where every walk ends.
  iterator end() noexcept { return iterator(); }

 private:
  friend iterator;

  bool isOk() const { return walk != nullptr && walk->ok(); }

  void next() {
    current.end();
    ++*walk;
    current = **walk;
  }

  XelCsvReader reader;
  std::optional<XelCsvReader::TableIterator> place;  // where the walk is made
  XelCsvReader::TableIterator* walk = nullptr;       // null before the first begin()
  XelCsvTableReader current;
};

// ---- Lookups.

// Whether a value of this type is an integer that can be looked up; characters and truth values are none.
template <class Value>
inline constexpr bool XelIsKeyInteger =
    std::is_integral_v<Value> && !std::is_same_v<Value, bool> && !std::is_same_v<Value, char> &&
#ifdef __cpp_char8_t
    !std::is_same_v<Value, char8_t> &&
#endif
    !std::is_same_v<Value, wchar_t> && !std::is_same_v<Value, char16_t> && !std::is_same_v<Value, char32_t>;

// Whether a value of this type is text that can be looked up: const char*, a string literal, std::string,
// std::string_view and what converts to one of these, but for the literal nullptr.
template <class Value>
inline constexpr bool XelIsKeyText =
    !std::is_same_v<Value, std::nullptr_t> &&
    (std::is_convertible_v<const Value&, const char*> || std::is_convertible_v<const Value&, std::string_view>);

// A value of a key as the zero-terminated text that lookups take. Texts are taken as they are, and end at their first
// byte 0 as they do in a file; integers are written in decimal digits, exactly: the key field must hold the same text,
// such as 7 and not 07 or 7.0. Only a string_view is copied, into memory of the environment. The value must outlive
// this object.
class XelKeyValue {
 public:
  // Throws std::bad_alloc where the value is copied, and nothing else.
  template <class Value>
  XelKeyValue(XelEnv environment, const Value& value) noexcept(!IsCopied<Value>) : env(environment) {
    static_assert(XelIsKeyInteger<Value> || XelIsKeyText<Value>,
                  "a value of a key is a text or an integer; write any other as the file does, and look that text up");
    if constexpr (XelIsKeyInteger<Value>) {
      *std::to_chars(digits, digits + sizeof digits - 1, value).ptr = '\0';
      text = digits;
    } else if constexpr (std::is_convertible_v<const Value&, const char*>) {
      text = value;
    } else if constexpr (std::is_base_of_v<std::string, Value>) {
      text = value.c_str();
    } else {
      copy(value);
    }
  }

  XelKeyValue(const XelKeyValue&) = delete;
  XelKeyValue& operator=(const XelKeyValue&) = delete;
  ~XelKeyValue() { env.free(copied, size); }

  // The text; null for a const char* that is null.
  const char* get() const noexcept { return text; }

 private:
  template <class Value>
  static constexpr bool IsCopied = !XelIsKeyInteger<Value> && !std::is_convertible_v<const Value&, const char*> &&
                                   !std::is_base_of_v<std::string, Value>;

  void copy(std::string_view view) {
    size = static_cast<long>(view.size()) + 1;
    copied = static_cast<char*>(env.allocate(size));
    copied[view.copy(copied, view.size())] = '\0';
    text = copied;
  }

  XelEnv env;
  const char* text = nullptr;
  char* copied = nullptr;
  long size = 0;
  char digits[48];  // more than any integer has
};

// What the lookups below share; not for use by others.
class XelComfortI {
 public:
  template <class Handle, class... Values>
  static XelCsvLine get(Handle& handle, const Values&... values) {
    static_assert(sizeof...(Values) > 0, "a lookup by key needs a value");
    const XelEnv env = getEnv(handle);
    return getLine(handle, XelKeyValue(env, values).get()...);
  }

  template <class Handle, class... Values>
  static std::optional<XelCsvLine> find(Handle& handle, const Values&... values) {
    static_assert(sizeof...(Values) > 0, "a lookup by key needs a value");
    const XelEnv env = getEnv(handle);
    return findLine(handle, XelKeyValue(env, values).get()...);
  }

  template <class Handle>
  static std::optional<XelCsvLine> findByNumber(Handle& handle, long number) {
    try {
      return handle.getLineByNumber(number);
    } catch (const XelCsvReader::XelLineNotFoundException&) {
      return std::nullopt;
    }
  }

  static std::optional<XelScoped<XelCsvTableReader>> findTable(XelCsvReader& reader, const char* name) {
    try {
      return std::optional<XelScoped<XelCsvTableReader>>(std::in_place, reader.getTableByName(name));
    } catch (const XelCsvReader::XelTableNotFoundException&) {
      if (name == nullptr) throw;
      return std::nullopt;
    }
  }

  template <class Handle>
  static XelEnv getEnv(const Handle& handle) noexcept {
    return handle.getEnv();
  }

 private:
  template <class Handle, class... Texts>
  static XelCsvLine getLine(Handle& handle, Texts... texts) {
    return handle.getLineByKey(static_cast<long>(sizeof...(Texts)), texts...);
  }

  // Too few values and a null one throw the exception of a key that is not there, and are therefore looked for first.
  template <class Handle, class... Texts>
  static std::optional<XelCsvLine> findLine(Handle& handle, Texts... texts) {
    const char* const values[] = {texts...};
    const bool isKey = isWhole(handle.getNumberOfKeys(), values, static_cast<long>(sizeof...(Texts)));
    try {
      return getLine(handle, texts...);
    } catch (const XelCsvReader::XelLineNotFoundException&) {
      if (isKey) return std::nullopt;
      throw;
    }
  }

  // Whether there is a value for each of the key columns.
  static bool isWhole(long keys, const char* const* values, long count) noexcept {
    for (long k = 0; k < keys; ++k) {
      if (k == count || values[k] == nullptr) return false;
    }
    return true;
  }
};

// The line whose key columns hold the values: getLineByKey without the count, for values that are const char*,
// std::string, std::string_view or integers, mixed as you like (see XelKeyValue). At least as many as there are key
// columns, in their order; more are not looked at. Throws what getLineByKey throws.
//
// The line belongs to the handle that is given, or to that of the guard, and lives until its next lookup; a handle that
// nobody keeps is refused. Costs what getLineByKey costs.
template <class... Values>
XelCsvLine XelGetLine(XelCsvTableReader& table, const Values&... values) {
  return XelComfortI::get(table, values...);
}

// The same for a one-table file.
template <class... Values>
XelCsvLine XelGetLine(XelCsvReader& reader, const Values&... values) {
  return XelComfortI::get(reader, values...);
}

// The same, and no line instead of an exception where the table has none with this key. All else is thrown as ever, by
// the same classes: fewer values than key columns and a null value (these two are XelLineNotFoundException as well), a
// file of the other kind, a corrupted file, one that cannot be opened, exhausted memory. The former last line has ended
// then too.
//
// None costs a throw and its catch beside the lookup.
template <class... Values>
[[nodiscard]] std::optional<XelCsvLine> XelFindLine(XelCsvTableReader& table, const Values&... values) {
  return XelComfortI::find(table, values...);
}

// The same for a one-table file.
template <class... Values>
[[nodiscard]] std::optional<XelCsvLine> XelFindLine(XelCsvReader& reader, const Values&... values) {
  return XelComfortI::find(reader, values...);
}

// The data line with this number, counted from 0, as by getLineByNumber, and no line where that throws
// XelLineNotFoundException. A table without an index answers past its end what getLineByNumber answers there, which may
// be a line; its number of lines is getNumberOfItems(). All other exceptions come through.
[[nodiscard]] inline std::optional<XelCsvLine> XelFindLineByNumber(XelCsvTableReader& table, long number) {
  return XelComfortI::findByNumber(table, number);
}

// The same for a one-table file.
[[nodiscard]] inline std::optional<XelCsvLine> XelFindLineByNumber(XelCsvReader& reader, long number) {
  return XelComfortI::findByNumber(reader, number);
}

// The table of this name, a text as XelKeyValue takes it, in a guard that ends it; none where the file has no such
// table. The reader must outlive it. All other exceptions of getTableByName come through, and also the one of a name
// that is null.
template <class Name>
[[nodiscard]] std::optional<XelScoped<XelCsvTableReader>> XelFindTable(XelCsvReader& reader, const Name& name) {
  static_assert(XelIsKeyText<Name>, "the name of a table is a text; XelFindTableByNumber takes numbers");
  return XelComfortI::findTable(reader, XelKeyValue(XelComfortI::getEnv(reader), name).get());
}

// The table with this number, counted from 0 in the order of the file, reserved tables included; as XelFindTable.
[[nodiscard]] inline std::optional<XelScoped<XelCsvTableReader>> XelFindTableByNumber(XelCsvReader& reader,
                                                                                      long number) {
  try {
    return std::optional<XelScoped<XelCsvTableReader>>(std::in_place, reader.getTableByNumber(number));
  } catch (const XelCsvReader::XelTableNotFoundException&) {
    return std::nullopt;
  }
}
