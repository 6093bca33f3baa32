#include "fuzz/support/Parameters.h"

namespace fuzz {

namespace {

[[noreturn]] void refuse(const std::string& text) { throw model::Failure("XelCsvReaderParameterException", text); }

void checkInclusion(char c, const std::string& separators, const std::string& what) {
  if (separators.find(c) == std::string::npos) return;
  refuse("XelCsvReader::XelCsvReader::inclusionTest : you are using a separator = " + separators + " and a " + what +
         " = " + c + "  " + what + "  must not be a separator. ");
}

void checkCharacters(char c1, const std::string& what1, char c2, const std::string& what2) {
  if (c1 != c2) return;
  refuse("XelCsvReader::XelCsvReader::testCharacter: you are using a " + what1 + "  =  " + c1 + " and  " + what2 +
         " =  " + c2 + "  You are not allowed to use a same character for " + what1 + " and " + what2 + " ");
}

}  // namespace

Parameters parseParameters(const Input& input) {
  Parameters parameters;
  const std::string& flags = wordAt(input, 0);
  parameters.isMultiTable = flags.find('m') != std::string::npos;
  parameters.isSplit = flags.find('s') != std::string::npos;
  parameters.characters.separators = upToZero(wordAt(input, 1));
  const std::string& characters = wordAt(input, 2);
  if (!characters.empty()) parameters.characters.decimal = characters[0];
  if (characters.size() > 1) parameters.characters.quote = characters[1];
  if (characters.size() > 2) parameters.comment = characters[2];
  return parameters;
}

void slowCheck(const Parameters& parameters) {
  const Characters& characters = parameters.characters;
  if (characters.decimal == '\0' || characters.quote == '\0' || parameters.comment == '\0') {
    refuse(
        "XelCsvReader::XelCsvReaderParameterException : You must specify a value different of 0 for separator, "
        "decimal, quote and comment characters");
  }
  checkInclusion(characters.quote, characters.separators, "Quote");
  checkInclusion(characters.decimal, characters.separators, "Decimal");
  checkInclusion(parameters.comment, characters.separators, "Comment");
  checkCharacters(parameters.comment, "Comment", characters.quote, "Quote");
  checkCharacters(parameters.comment, "Comment", characters.decimal, "Decimal");
  checkCharacters(characters.decimal, "Decimal", characters.quote, "Quote");
}

model::Settings settingsOf(const Parameters& parameters) {
  model::Settings settings;
  settings.isMultiTable = parameters.isMultiTable;
  settings.isSplit = parameters.isSplit;
  settings.separators = parameters.characters.separators;
  settings.decimal = parameters.characters.decimal;
  settings.quote = parameters.characters.quote;
  settings.comment = parameters.comment;
  return settings;
}

XelCsvReader openReader(XelEnv env, const std::string& fileName, const Parameters& parameters, bool isCached) {
  const Characters& characters = parameters.characters;
  return XelCsvReader(env, fileName.c_str(), parameters.isMultiTable ? 1 : 0, parameters.isSplit ? 1 : 0,
                      characters.separators.c_str(), characters.decimal, characters.quote, parameters.comment,
                      isCached ? 1 : 0);
}

}  // namespace fuzz
