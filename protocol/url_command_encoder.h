// UrlCommandEncoder: turns the query of a GET URL into the JSON command text of a method, so a
// plain link can ask for any command. The caller strips the path and hands in what stands behind
// the '?'.
//
// Queries are read literally: pieces split at '&', key and value at the first '=', the first
// occurrence of a key wins, a piece without '=' is dropped, and nothing is decoded, trimmed or
// folded. Missing keys read as empty. Every operation returns the command text, or an empty
// string for a query it can't translate; numbers that don't parse become 0 without complaint.
// EncodeMethodUrl builds its text by hand and escapes nothing: the id and method are inserted as
// they stand and `p` must already be JSON. The image forms pack their numbers by position, so a
// missing key moves the later ones forward; receivers depend on that packing.
// No state; thread-safe (the log writer has its own lock).
#ifndef VSM_PROTOCOL_URL_COMMAND_ENCODER_H_
#define VSM_PROTOCOL_URL_COMMAND_ENCODER_H_

#include <map>
#include <string>

namespace vsm {

using UrlQuery = std::map<std::string, std::string>;

class UrlCommandEncoder {
 public:
  virtual ~UrlCommandEncoder() = default;

  UrlQuery ParseUrlQuery(const std::string& query) const;

  // {"id":"ID","method":"METHOD"[,"parameter":P]} from `id` and `p`. An empty query is logged
  // as an error; a query without `id` gives "" silently.
  std::string EncodeMethodUrl(const std::string& method, const std::string& query) const;
  // The styled GetFile command with `path` as its one parameter and the id "0".
  std::string EncodeFileUrl(const std::string& path) const;
  // The styled GetImageByIndex command with [index, thumbnail == "true"]; needs id, index and
  // thumbnail.
  std::string EncodeThumbnailUrl(const std::string& query) const;
  // The styled GetImageByIndex command with those of index, width, height, act and webcam that
  // are present, in that order; needs id.
  std::string EncodeImageUrl(const std::string& query) const;
};

}  // namespace vsm

#endif  // VSM_PROTOCOL_URL_COMMAND_ENCODER_H_
