#pragma once

// Output files of the orvane command. Everything is written to a temporary file in the
// target's folder, which is flushed to disk, closed and only then renamed over the
// target: a full disk, a file-size limit, an interrupt or any other failure leaves the
// old target as it was and no temporary file behind. The target "-" is standard output;
// a character device (/dev/null) or a named pipe is written straight through, opened
// only once something is written or the output is committed.

#include <memory>
#include <ostream>
#include <string>

#include "interrupt.h"

namespace orvane::cli {

// True for "-" and for a character device or named pipe: outputs that are streamed, whose
// names need no extension.
bool IsStreamed(const std::string& target);

class OutputFile {
 public:
  // Checks the target (an existing directory or read-only file is refused) and creates
  // the temporary beside it. Failures raise orvane::Error naming the file and the reason.
  explicit OutputFile(std::string target);
  // Removes the temporary unless Commit succeeded.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // The stream to write to. A failed write raises orvane::Error through it; an interrupt
  // raises error 18.
  std::ostream& Stream();
  // Flushes, syncs and closes the temporary, then renames it over the target.
  void Commit();
  // The target's name, as given.
  const std::string& Target() const noexcept { return target_; }

 private:
  class Buffer;
  std::string target_;
  std::string temporary_;
  InterruptGuard guard_;
  std::unique_ptr<Buffer> buffer_;
  std::unique_ptr<std::ostream> stream_;
  bool committed_ = false;
  bool streamed_ = false;  // a device or pipe: no temporary, no rename
};

}  // namespace orvane::cli
