#include "results/rows.hpp"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace tsrf_module_io {

namespace {

/// Lines of a piece, some 100 microseconds of work, and pieces for each hand before they are
/// written.
constexpr std::size_t kLines = 512;
constexpr std::size_t kPieces = 4;

using Fill = frame::FunctionRef<void(std::size_t, Row&)>;

/// Appends the lines from `first` to before `last`, or to before the first unsound one.
std::optional<Unsound> append(std::size_t first, std::size_t last, Fill fill, std::string& text) {
  Row row;
  for (std::size_t line = first; line < last; ++line) {
    fill(line, row);
    if (!row.finite()) return Unsound{line, row.unsound()};
    row.end(text);
  }
  return std::nullopt;
}

/// Fills the pieces with the lines from `first` to before `last`, a piece at a time each hand.
std::optional<Unsound> fill_pieces(frame::Crew& crew, std::size_t first, std::size_t last,
                                   Fill fill, std::vector<std::string>& pieces) {
  std::optional<Unsound> unsound;
  std::mutex judging;
  crew.each(pieces.size(), 1, [&](std::size_t n) {
    pieces[n].clear();
    const std::size_t begin = std::min(first + n * kLines, last);
    const auto found = append(begin, std::min(begin + kLines, last), fill, pieces[n]);
    if (!found) return;
    const std::lock_guard lock(judging);
    if (!unsound || found->line < unsound->line) unsound = found;
  });
  return unsound;
}

/// Writes the lines straight into the buffer of the file.
std::optional<Unsound> write_alone(frame::Log& log, frame::TextOutput& file, std::size_t count,
                                   Fill fill) {
  for (std::size_t first = 0; first < count; first += kLines) {
    const std::size_t last = std::min(first + kLines, count);
    const auto unsound = append(first, last, fill, file.buffer());
    file.line_done(log);
    file.rows_done((unsound ? unsound->line : last) - first);
    if (unsound) return unsound;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Unsound> write_rows(frame::Log& log, frame::Crew& crew, frame::TextOutput& file,
                                  std::size_t count, Fill fill) {
  if (crew.hands() == 1) return write_alone(log, file, count, fill);
  std::vector<std::string>& pieces = file.pieces();
  pieces.resize(kPieces * crew.hands());
  const std::size_t at_once = pieces.size() * kLines;
  for (std::size_t first = 0; first < count; first += at_once) {
    const auto unsound = fill_pieces(crew, first, std::min(first + at_once, count), fill, pieces);
    const std::size_t end = unsound ? unsound->line : std::min(first + at_once, count);
    for (std::size_t n = 0; first + n * kLines < end; ++n) {
      file.buffer().append(pieces[n]);
      file.line_done(log);
    }
    file.rows_done(end - first);
    if (unsound) return unsound;
  }
  return std::nullopt;
}

}  // namespace tsrf_module_io
