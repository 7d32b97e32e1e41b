#include "frame/log.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>
#include <utility>

#include "frame/findings.hpp"
#include "frame/text_input.hpp"

namespace frame {

namespace {
constexpr std::size_t kPendingLimit = 1 << 16;
constexpr std::size_t kMostWords = 4096;  // bytes of a lost record that are remembered
}  // namespace

Log::Log(std::ostream& screen, std::ostream& errors) : screen_(screen), errors_(errors) {}

Log::~Log() {
  try {
    flush();
  } catch (const Stop&) {
    // Reported on standard error; nothing more can be done at this point.
  }
  if (fd_ >= 0) ::close(fd_);
}

void Log::open(const std::string& name) {
  use_screen();
  name_ = name;
  fd_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd_ < 0) {
    errors_ << "### cannot open " << name << " : " << std::strerror(errno) << std::endl;
    throw Stop{kStatusOpenError};
  }
}

void Log::use_screen() {
  flush();
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

void Log::error_and_log(std::string_view text) {
  if (collects()) fail(text);
  errors_ << text << std::endl;
  write_line(text);
  flush();
}

void Log::write_line(std::string_view text) {
  if (collects()) {
    if (text.starts_with("%%% warning :")) take_doubt({std::string(text)});
    return;
  }
  if (is_screen()) {
    screen_ << text << '\n';
    return;
  }
  pending_ += text;
  pending_ += '\n';
  if (pending_.size() > kPendingLimit) flush();
}

void Log::write_screen(std::string_view text) {
  if (collects()) return;
  screen_ << text << '\n';
  screen_.flush();
}

void Log::write_everywhere(std::string_view text) {
  if (text.empty()) return;
  write_screen(text);
  if (!is_screen()) write_line(text);
}

std::string Log::place_of_fault(const TextInput& file) { return file.line_text(file.fault_line()); }

void Log::fail_with(const std::vector<std::string>& lines) {
  if (collects()) take_fault(lines);
  for (const std::string& line : lines) write_line(line);
  unwind();
}

void Log::take_fault(std::vector<std::string> lines) {
  findings_->add({.fault = true, .lines = std::move(lines)});
}

void Log::take_doubt(std::vector<std::string> lines) {
  findings_->add({.fault = false, .lines = std::move(lines)});
}

/// A record that runs on to further lines mostly lacks a field: the next line is then a record of
/// its own, and the fault lies where this one begins.
void Log::take_lost(TextInput& file, std::vector<std::string> lines) {
  const std::int64_t begin = file.record_line();
  if (findings_->lost_at(file.name(), begin)) lines.clear();  // told when it was read before
  Finding finding{.lines = std::move(lines), .file = file.name(), .line = begin};
  if (!finding.lines.empty() && file.fault_line() > begin) {
    finding.lines.push_back("the record goes on to line " + std::to_string(file.fault_line()));
  }
  findings_->add(std::move(finding));
  std::string_view text;
  file.seek_record();
  while (file.next_line(text) && text.find_first_not_of(" \t") == std::string_view::npos) {
  }
  findings_->lose(file.name(), text.empty() ? " " : text.substr(0, kMostWords));
  if (!findings_->enough_of(file.name())) return;
  findings_->lose(file.name(), {});
  file.pass(file.content().size());
}

void Log::settle(const TextInput* file) {
  failing_ = false;
  if (file != nullptr) findings_->place(file->name(), file->record_line());
}

void Log::settle(const TextInput& file, std::size_t place) {
  findings_->place(file.name(), file.line_at(place));
}

void Log::look_at_length(const TextInput& file) {
  if (!file.ran_on() || findings_->told_of_length(file.name())) return;
  findings_->add({.fault = false,
                  .lines = {"%%% warning : a record takes more than one line"},
                  .file = file.name(),
                  .line = file.record_line()});
}

void Log::note_tag(std::string_view text) noexcept {
  if (collects()) return;
  try {
    write_line(text);
  } catch (...) {
    // The failure that unwinds is what the user has to see; a lost tag must not replace it.
    errors_ << text << std::endl;
  }
}

void Log::unwind() {
  failing_ = true;
  throw Failure{};
}

void Log::flush() {
  if (is_screen()) {
    screen_.flush();
    return;
  }
  std::string_view rest = pending_;
  while (!rest.empty()) {
    const ssize_t written = ::write(fd_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      pending_.clear();
      errors_ << "### cannot write " << name_ << " : " << std::strerror(errno) << std::endl;
      throw Stop{kStatusOpenError};
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  pending_.clear();
}

}  // namespace frame
