// Punycode (RFC 3492) for host name labels, and host names in their "xn--" form.
//
// PunycodeEncode is the RFC's encoder over wide strings holding UTF-16 (see utf_convert.h),
// with base 36, tmin 1, tmax 26, skew 38, damp 700, initial bias 72 and initial n 128, and with
// these particulars callers rely on:
// - `inputLength` must be kPunycodeZeroTerminated; `input` is then read up to its zero. Any
//   other length, a null input, or a null output with a non-zero `outputSize` give 0.
// - Surrogate pairs are joined into one code point; a high surrogate without a low one behind
//   it, or a lone low one, gives 0. At most 512 code points fit; more give 0.
// - Writes beyond `outputSize` are dropped but still counted, and the result is the full
//   length of the encoding, which may exceed `outputSize`. No terminating zero is written.
// - An all-basic label (every code point below 128) comes out unchanged, with no '-' behind it.
// - `caseFlags`, when not null, holds one flag per code point: a flagged basic letter goes out
//   in upper case and an unflagged one in lower case, and the last digit of a flagged non-basic
//   code point uses 'A' to 'Z' in place of 'a' to 'z'. Without flags basic code points go out as
//   they are. The module passes no flags. Elements must be below 0x80000000, since bit 31 of an
//   internal entry carries the flag.
// - The overflow test compares m - n with (0x7FFFFDFF - delta) / (h + 1), a larger value
//   giving 0. Valid Unicode never reaches it; only raw elements far above 0x10FFFF do.
// - *nonBasicCount (when not null) receives the number of non-basic code points; an empty
//   input gives 0 with a count of 0. A result of 0 always means failure.
//
// HostNameToPunycode gives a host name in the form a resolver accepts: each label that holds
// more than ASCII becomes "xn--" and its encoding, and ASCII labels stay as they are.
//
// Thread-safe; no state of its own (the tracked heap has its own lock).
//
// No export of the module reaches this code: its one user is the origin normaliser of the
// certificate tools.
#ifndef VSM_SUPPORT_PUNYCODE_H_
#define VSM_SUPPORT_PUNYCODE_H_

#include <cstdint>

namespace vsm {

// The one accepted `inputLength`: the input is zero-terminated.
constexpr uint32_t kPunycodeZeroTerminated = 0xFFFFFFFF;

uint32_t PunycodeEncode(const wchar_t* input, uint32_t inputLength, char* output,
                        uint32_t outputSize, const uint8_t* caseFlags, int ignored,
                        uint32_t* nonBasicCount);

// Splits `host` (UTF-8) at '.', by the rule of SplitString, and encodes each label. With a null
// `output` the result is the size to allocate, the text's length + 1; otherwise the text and a
// terminating zero go to `output`, and the result is the length without the zero. Callers call
// twice, first for the size. 0 means failure: a null host, a label that doesn't decode (an empty
// one in the middle or at the start, malformed UTF-8) or that PunycodeEncode refuses (more than
// 512 code points). A trailing dot is lost, since nothing follows it. A label whose encoding
// passes 1024 bytes is cut there; DNS labels are far shorter.
uint32_t HostNameToPunycode(const char* host, char* output);

}  // namespace vsm

#endif  // VSM_SUPPORT_PUNYCODE_H_
