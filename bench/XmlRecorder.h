#pragma once

#include <deque>
#include <string>
#include <vector>

// What the frame asks of libxml2 while it reads a product, written down call by call, and the same
// calls again without the frame: the floor below which no reader that asks the same can come.
//
// The program that uses this is linked with --wrap for the functions that are written down. One
// thread at a time.

/// One call, or a query and the copy of what it found.
struct XmlStep {
  enum class Kind {
    kParse,     // read the file `text` and parse it
    kMatch,     // evaluate `text`, no more: a count, or nothing was found
    kText,      // evaluate `text` and copy the first match's text
    kAttribute  // evaluate `text` and copy the first match's `attribute`
  };
  Kind kind = Kind::kMatch;
  std::string text;
  std::string attribute;
};

/// Writes down every step that is made while it exists.
class XmlRecorder {
 public:
  /// Appends to `steps`, which must outlive this.
  explicit XmlRecorder(std::vector<XmlStep>& steps);
  ~XmlRecorder();
  XmlRecorder(const XmlRecorder&) = delete;
  XmlRecorder& operator=(const XmlRecorder&) = delete;
};

/// Makes the same steps with bare libxml2: a context of its own for each query, as in the frame.
/// Appends a copy of each text and attribute to `copies`. Throws std::runtime_error, naming the
/// step, when one does not find what it found when it was written down.
void Replay(const std::vector<XmlStep>& steps, std::deque<std::string>& copies);
