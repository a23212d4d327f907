#include "support/text.h"

#include <cstring>

namespace omrel {
namespace {

// The text's length, but at most n; reads no byte behind its NUL nor behind the first n.
std::size_t length_up_to(const char* text, std::size_t n) {
  const void* end = std::memchr(text, '\0', n);
  return end == nullptr ? n : static_cast<std::size_t>(static_cast<const char*>(end) - text);
}

// How many times the character stands at the text's start.
std::size_t leading_run(const char* text, char character) {
  const char accepted[] = {character, '\0'};
  return std::strspn(text, accepted);
}

}  // namespace

char* copy_text_n(char* destination, const char* source, std::size_t n) {
  if (destination == nullptr || source == nullptr) return destination;
  const std::size_t length = length_up_to(source, n);
  std::memcpy(destination, source, length);
  destination[length] = '\0';
  return destination;
}

char* append_text_n(char* destination, const char* source, std::size_t n) {
  if (destination == nullptr) return nullptr;
  char* added = copy_text_n(destination + std::strlen(destination), source, n);
  return added + std::strlen(added);
}

std::size_t char_position(const char* text, char character) {
  // strchr would find the NUL, which is no character of the text.
  if (text == nullptr || character == '\0') return 0;
  const char* found = std::strchr(text, character);
  return found == nullptr ? 0 : static_cast<std::size_t>(found - text) + 1;
}

char* remove_leading(char* text, std::size_t n, char fill) {
  if (text == nullptr) return text;
  const std::size_t length = std::strlen(text);
  if (n < 1 || n > length) return text;
  std::memmove(text, text + n, length - n);
  std::memset(text + (length - n), fill, n);
  return text;
}

char* strip_leading_char(char* text, char character) {
  if (text == nullptr) return text;
  const char* rest = text + leading_run(text, character);
  std::memmove(text, rest, std::strlen(rest) + 1);
  return text;
}

int all_chars_are(const char* text, char character) {
  if (text == nullptr || *text == '\0') return 0;
  return text[leading_run(text, character)] == '\0' ? 1 : 0;
}

char* string_append(char** holder, const char* text, std::ptrdiff_t n) {
  if (holder == nullptr) return nullptr;
  if (text == nullptr) return *holder;
  const std::size_t added =
      n < 1 ? std::strlen(text) : length_up_to(text, static_cast<std::size_t>(n));
  const std::size_t length = *holder == nullptr ? 0 : std::strlen(*holder);
  // Characters of the growing text itself move with it.
  const auto at = reinterpret_cast<std::uintptr_t>(text);
  const std::uintptr_t offset = at - reinterpret_cast<std::uintptr_t>(*holder);
  const bool is_own = *holder != nullptr && offset <= length;
  auto* grown = static_cast<char*>(std::realloc(*holder, length + added + 1));
  if (grown == nullptr) return nullptr;
  std::memcpy(grown + length, is_own ? grown + offset : text, added);
  grown[length + added] = '\0';
  *holder = grown;
  return grown;
}

void free_and_null(char** holder) {
  if (holder == nullptr) return;
  std::free(*holder);
  *holder = nullptr;
}

}  // namespace omrel
