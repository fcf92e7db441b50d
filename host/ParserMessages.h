#pragma once

/// While an object exists, the XML parser's messages on the calling thread go to the log, one line
/// for each. By default they go to standard error, which a service usually does not keep.
class ParserMessages {
 public:
  ParserMessages();
  ~ParserMessages();
  ParserMessages(const ParserMessages&) = delete;
  ParserMessages& operator=(const ParserMessages&) = delete;
};
