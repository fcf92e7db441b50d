#pragma once

#include <deque>
#include <string>
#include <vector>

// Records the calls of libxml2 that the frame makes while it reads a product, and repeats them
// without the frame: no reader that makes the same calls can take less time than that.
//
// The program that uses this is linked with --wrap for the recorded functions. Not thread-safe.

/// One call of libxml2; a query together with the copying of its result.
struct XmlStep {
  enum class Kind {
    kParse,     // read the file `text` and parse it
    kMatch,     // evaluate `text` only: to count, or because nothing was found
    kText,      // evaluate `text` and copy the first match's text
    kAttribute  // evaluate `text` and copy the first match's `attribute`
  };
  Kind kind = Kind::kMatch;
  std::string text;
  std::string attribute;
};

/// Records every step that is made while the object exists.
class XmlRecorder {
 public:
  /// Appends to `steps`, which must outlive this.
  explicit XmlRecorder(std::vector<XmlStep>& steps);
  ~XmlRecorder();
  XmlRecorder(const XmlRecorder&) = delete;
  XmlRecorder& operator=(const XmlRecorder&) = delete;
};

/// Repeats the steps with libxml2 alone, with a new context for each query, as in the frame.
/// Appends a copy of each text and attribute to `copies`. Throws std::runtime_error, with the
/// step's name, when a step finds nothing although it did when it was recorded.
void Replay(const std::vector<XmlStep>& steps, std::deque<std::string>& copies);
