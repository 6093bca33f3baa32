// A data file that tests change under its reader.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/support/DataFile.h"

// A file in a folder of its own, which can be taken away too. Every change is undone by putBack(), and all is removed at
// the end of the scope.
class ChangingFile {
 public:
  explicit ChangingFile(std::string_view content)
      : original(content), folder(std::filesystem::path(place.getName()) / "folder"), path(folder / "data.csv") {
    name = path.string();
    putBack();
  }

  const char* getName() const { return name.c_str(); }

  // ---- In place: whoever has the file open sees it.

  void truncate(std::size_t length) const { std::filesystem::resize_file(path, length); }
  void append(std::string_view more) const { put(more, std::ios::app); }
  void overwrite(std::string_view bytes) const { put(bytes, std::ios::in | std::ios::out); }

  // ---- In the file's place: whoever has the file open keeps the old one.

  // Another file is given this one's name.
  void replace(std::string_view content) const {
    const std::filesystem::path other = std::filesystem::path(place.getName()) / "other";
    write(other, content, std::ios::trunc);
    remove();  // some file systems wait for the disk when a file gives its name to another
    std::filesystem::rename(other, path);
  }

  void remove() const { std::filesystem::remove(path); }

  void linkToNothing() const {
    remove();
    std::filesystem::create_symlink(folder / "nothing", path);
  }

  void makeADirectory() const {
    remove();
    std::filesystem::create_directory(path);
  }

  // Nobody may read the file, or look into its folder; root may all the same.
  void takePermissions() const { std::filesystem::permissions(path, std::filesystem::perms::none); }
  void takeFolderPermissions() const { std::filesystem::permissions(folder, std::filesystem::perms::none); }

  void removeFolder() const { std::filesystem::remove_all(folder); }

  void makeFolderAFile() const {
    removeFolder();
    write(folder, "a file", std::ios::trunc);
  }

  // The original bytes, as a file of that name.
  void putBack() const {
    if (!std::filesystem::is_directory(folder)) {
      std::filesystem::remove(folder);
      std::filesystem::create_directory(folder);
    }
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    std::filesystem::remove(path);
    write(path, original, std::ios::trunc);
  }

 private:
  void put(std::string_view bytes, std::ios::openmode mode) const { write(path, bytes, mode); }

  static void write(const std::filesystem::path& to, std::string_view bytes, std::ios::openmode mode) {
    std::ofstream stream;
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream.open(to, mode | std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
  }

  DataDirectory place;
  std::string original;
  std::filesystem::path folder;
  std::filesystem::path path;
  std::string name;
};
