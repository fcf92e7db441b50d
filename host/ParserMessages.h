#pragma once

/// Leads what the XML parser says on the calling thread to the log, one line a message, while one
/// exists: by default it goes to standard error, where nobody looks when a service has failed.
class ParserMessages {
 public:
  ParserMessages();
  ~ParserMessages();
  ParserMessages(const ParserMessages&) = delete;
  ParserMessages& operator=(const ParserMessages&) = delete;
};
