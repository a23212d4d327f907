// Small operations on NUL-terminated texts, and texts that grow on the heap.
//
// A holder is a pointer to a text's pointer; a growing function stores the moved text there. A
// null text is accepted everywhere and changes nothing. Heap texts are malloc's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

namespace omrel {

// A heap text that frees itself.
struct FreeText {
  void operator()(char* text) const { std::free(text); }
};
using HeapText = std::unique_ptr<char, FreeText>;

// Copies the source up to its end or n characters, then a NUL; the destination has room for n + 1
// bytes. Returns the destination.
char* copy_text_n(char* destination, const char* source, std::size_t n);

// Appends at most n characters of the source, then a NUL. Returns the address of that NUL.
char* append_text_n(char* destination, const char* source, std::size_t n);

// The 1-based position of the character's first occurrence, 0 when there is none.
std::size_t char_position(const char* text, char character);

// Moves a text n places to the left, 1 <= n <= its length, and overwrites the n places freed at
// its end with the fill character (NULs when that is NUL). Returns the text.
char* remove_leading(char* text, std::size_t n, char fill);

// Removes the whole leading run of the character. Returns the text.
char* strip_leading_char(char* text, char character);

// 1 when the text is not empty and every character equals the given one, else 0.
int all_chars_are(const char* text, char character);

// Appends the whole text (n < 1) or at most its first n characters; it may be the holder's own.
// Returns the text's new address; null when there is no memory, the holder's text then being as it
// was.
char* string_append(char** holder, const char* text, std::ptrdiff_t n);

// Appends one character; as string_append.
inline char* string_append_char(char** holder, char character) {
  return string_append(holder, &character, 1);
}

// Frees the heap text and sets the holder to null.
void free_and_null(char** holder);

// Exchanges two words.
inline void swap_words(std::int32_t& x, std::int32_t& y) { std::swap(x, y); }

}  // namespace omrel
