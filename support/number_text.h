// Decimal, hexadecimal and URL-encoded text.
//
// These parsers are lenient by design: they never report an error, and what they don't
// understand counts as zero or ends the number. Buffers are the caller's and are not checked.
// Thread-safe; no state.
#ifndef VSM_SUPPORT_NUMBER_TEXT_H_
#define VSM_SUPPORT_NUMBER_TEXT_H_

#include <cstdint>

namespace vsm {

// Reads a decimal integer from the first `count` characters. Leading '-' each flip the sign;
// any other character before the first digit gives 0, and the first non-digit after the digits
// ends the number. Null text, a count below 1 or no digits give 0. The value is built in two
// passes with a signed power-of-ten scale, and the second pass ends at a non-digit only while
// the scale is not negative: so "-12" gives -12 but "--12" gives 0, which is kept as it stands.
// Values beyond 32 bits wrap.
int32_t ParseInt(const char* text, int32_t count);
// ParseInt over the whole text.
int32_t ParseIntString(const char* text);

// Each pair of characters gives one byte; an odd last character is ignored. Only '1' to '9'
// and 'A' to 'F' are digits; anything else, lower-case letters included, counts as 0. Null
// text gives 0; a null output gives strlen(text) / 2, the bytes needed. Returns the byte count.
int32_t HexToBytes(const char* text, uint8_t* output);
// Upper-case hexadecimal of `count` bytes with a terminating zero. Null data gives 0; otherwise
// the result is count * 2 + 1, also with a null output, which only asks for the size. A negative
// count counts as 0.
int32_t BytesToHex(const uint8_t* data, int32_t count, char* output);

// Decodes '+' to a blank and "%XY" to one byte, copying everything else up to the terminating
// zero; `target` receives at most strlen(source) + 1 bytes. Either null returns at once. The
// digits are not validated: a character below 'A' counts as its value minus '0', any other as
// its upper-case form minus 55.
// Beware: a '%' among the last two characters makes the decoder read the two bytes behind it
// whatever they are, and so past the terminating zero, and then go on from there. The source
// must not end in such a '%'; this decoder has always worked that way and is kept as it is.
void UrlDecode(const char* source, char* target);

}  // namespace vsm

#endif  // VSM_SUPPORT_NUMBER_TEXT_H_
