#include "formats/XmlText.h"

#include <algorithm>

#include "text/DisplayText.h"

namespace zvwttool {
namespace {

bool isOfXml(std::string_view character) {
  const char first = character.front();
  const bool isControl = static_cast<unsigned char>(first) < 0x20;
  return (!isControl || first == '\t' || first == '\n' || first == '\r') &&
         character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";
}

/// Where the first thing stands that XML cannot have.
std::size_t placeOfFault(std::string_view document) {
  const std::size_t mark = document.find("]]>");
  std::size_t place = 0;
  while (place < std::min(mark, document.size())) {
    const std::size_t size = characterSize(document.substr(place));
    if (size == 0 || !isOfXml(document.substr(place, size))) {
      return place;
    }
    place += size;
  }
  return mark;
}

}  // namespace

std::string_view textThatIsNoXml(std::string_view document) {
  const std::size_t place = placeOfFault(document);
  if (place == std::string_view::npos) {
    return "";
  }
  const std::size_t begin = document.rfind('>', place) + 1;
  return document.substr(begin, document.find('<', place) - begin);
}

}  // namespace zvwttool
