#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <streambuf>
#include <vector>

#include "orvane/core/error.h"

namespace orvane::cli {

namespace {

constexpr const char* kSource = "orvane";

[[noreturn]] void Fail(const std::string& target, const std::string& what, int error) {
  throw Error(5, kSource, target + ": " + what + " (" + std::strerror(error) + ")");
}

[[noreturn]] void FailInterrupted(const std::string& target) {
  throw Error(18, kSource, "The writing was interrupted; " + target + " was left as it was.");
}

}  // namespace

bool IsStreamed(const std::string& target) {
  struct stat existing {};
  return target == "-" ||
         (::stat(target.c_str(), &existing) == 0 && (S_ISCHR(existing.st_mode) || S_ISFIFO(existing.st_mode)));
}

// A stream buffer over a file descriptor that raises orvane::Error on any failure.
class OutputFile::Buffer : public std::streambuf {
 public:
  Buffer(int fd, const std::string& target) : fd_(fd), target_(target), data_(std::size_t{1} << 16) {
    setp(data_.data(), data_.data() + data_.size());
  }
  // A buffer over a device or pipe that is opened only when written to or committed, so
  // that an output checked up front and then dropped never opens (or ends) the stream.
  explicit Buffer(const std::string& target) : Buffer(-1, target) { deferred_ = true; }
  ~Buffer() override {
    if (fd_ >= 0) ::close(fd_);
  }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  // Writes out what is buffered.
  void Drain() {
    if (Interrupted()) FailInterrupted(target_);
    Open();
    const char* p = pbase();
    auto left = static_cast<std::size_t>(pptr() - pbase());
    while (left > 0) {
      const ssize_t n = ::write(fd_, p, left);
      if (n < 0) {
        if (errno == EINTR && !Interrupted()) continue;
        if (errno == EINTR) FailInterrupted(target_);
        Fail(target_, "cannot write the file", errno);
      }
      p += n;
      left -= static_cast<std::size_t>(n);
    }
    setp(data_.data(), data_.data() + data_.size());
  }

  // Drains, syncs the data to disk and closes the descriptor.
  void Close() {
    Drain();
    Open();  // nothing was written: the stream is still opened, and ended
    // Some file systems (pipes, special files) cannot sync; that is no failure.
    if (::fsync(fd_) != 0 && errno != EINVAL && errno != EROFS) Fail(target_, "cannot write the file", errno);
    const int fd = fd_;
    fd_ = -1;
    if (::close(fd) != 0) Fail(target_, "cannot write the file", errno);
  }

 protected:
  int_type overflow(int_type c) override {
    Drain();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(c);
      pbump(1);
    }
    return traits_type::not_eof(c);
  }
  int sync() override {
    Drain();
    return 0;
  }

 private:
  void Open() {
    if (!deferred_ || fd_ >= 0) return;
    fd_ = ::open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd_ < 0) Fail(target_, "cannot write the file", errno);
    deferred_ = false;
  }

  int fd_;
  const std::string& target_;
  std::vector<char> data_;
  bool deferred_ = false;
};

OutputFile::OutputFile(std::string target) : target_(std::move(target)) {
  if (target_.empty()) throw Error(5, kSource, "The output file name is empty.");
  if (target_ == "-") {
    // Standard output: written as it comes, with nothing to rename.
    const int fd = ::dup(STDOUT_FILENO);
    if (fd < 0) Fail("standard output", "cannot write", errno);
    buffer_ = std::make_unique<Buffer>(fd, target_);
    stream_ = std::make_unique<std::ostream>(buffer_.get());
    stream_->exceptions(std::ios::badbit);
    return;
  }
  const mode_t mask = ::umask(0);
  ::umask(mask);
  mode_t mode = 0666 & ~mask;
  struct stat existing {};
  if (::stat(target_.c_str(), &existing) == 0) {
    if (S_ISDIR(existing.st_mode)) Fail(target_, "cannot replace the file", EISDIR);
    if (S_ISCHR(existing.st_mode) || S_ISFIFO(existing.st_mode)) {
      // A device such as /dev/null, or a pipe: written straight through, nothing renamed.
      streamed_ = true;
      buffer_ = std::make_unique<Buffer>(target_);
      stream_ = std::make_unique<std::ostream>(buffer_.get());
      stream_->exceptions(std::ios::badbit);
      return;
    }
    if (!S_ISREG(existing.st_mode)) {
      throw Error(5, kSource, target_ + ": cannot replace the file: it is not a regular file");
    }
    // The owner's write bit counts even for root, who could otherwise write anything.
    if ((existing.st_mode & S_IWUSR) == 0 || ::access(target_.c_str(), W_OK) != 0) {
      throw Error(5, kSource, target_ + ": cannot replace the file: it is read-only");
    }
    mode = existing.st_mode & 07777;
  }
  const std::filesystem::path path(target_);
  std::filesystem::path folder = path.parent_path();
  if (folder.empty()) folder = ".";
  const std::string pattern = (folder / ("." + path.filename().string() + ".XXXXXX.partial")).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  const int fd = ::mkstemps(name.data(), 8);  // the suffix ".partial"
  if (fd < 0) Fail(target_, "cannot create the file", errno);
  temporary_ = name.data();
  if (::fchmod(fd, mode) != 0) {
    const int error = errno;
    ::close(fd);
    ::unlink(temporary_.c_str());
    Fail(target_, "cannot create the file", error);
  }
  buffer_ = std::make_unique<Buffer>(fd, target_);
  stream_ = std::make_unique<std::ostream>(buffer_.get());
  stream_->exceptions(std::ios::badbit);  // rethrows the buffer's own error
}

OutputFile::~OutputFile() {
  if (committed_) return;
  stream_.reset();
  buffer_.reset();
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

std::ostream& OutputFile::Stream() { return *stream_; }

void OutputFile::Commit() {
  stream_->flush();
  buffer_->Close();
  if (target_ == "-" || streamed_) {
    committed_ = true;
    return;
  }
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) Fail(target_, "cannot replace the file", errno);
  committed_ = true;
}

}  // namespace orvane::cli
