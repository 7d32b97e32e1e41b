#include "radiation/view_factor_rows.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "frame/numbers.hpp"

namespace tsrf_module_raddat {

namespace {

constexpr std::size_t kPieceSize = 1 << 18;
constexpr std::size_t kPieces = 8;  // for each hand before they are taken

struct Piece {
  std::string_view text;
  std::vector<PlainRow> rows;
  std::size_t parsed = 0;  // bytes of the text that the rows stand for
};

/// Reads the fields of the line at `at`; false when it is not plain.
bool plain_row(const char* at, const char* last, const Data& data, PlainRow& row) {
  std::int32_t rank = 0, source = 0, destination = 0;
  at = frame::scan_plain_field(at, last, rank);
  if (at != nullptr) at = frame::scan_plain_field(at, last, source);
  if (at != nullptr) at = frame::scan_plain_field(at, last, rank);
  if (at != nullptr) at = frame::scan_plain_field(at, last, destination);
  if (at != nullptr) at = frame::scan_plain_field(at, last, row.factor);
  if (at == nullptr || row.factor < 0.0 || row.factor > kGreatestFactor) return false;
  row.factor = std::min(row.factor, 1.0);
  row.first = data.pgmap.find(source);
  row.second = destination == 0 ? kSkyGroup : data.pgmap.find(destination);
  return row.first >= 0 && (destination == 0 || row.second >= 0);
}

/// Parses the lines of a piece up to the first that is not plain.
void parse(const Data& data, Piece& piece) {
  piece.rows.clear();
  const char* const first = piece.text.data();
  const char* const last = first + piece.text.size();
  const char* at = first;
  while (at < last) {
    const auto* const end =
        static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(last - at)));
    PlainRow row{};
    if (end == nullptr || !plain_row(at, end + 1, data, row)) break;
    piece.rows.push_back(row);
    at = end + 1;
  }
  piece.parsed = static_cast<std::size_t>(at - first);
}

/// The next lines of the text, some `kPieceSize` of them in bytes.
std::string_view next_text(std::string_view& rest) {
  std::size_t end = rest.size();
  if (end > kPieceSize) {
    end = rest.find('\n', kPieceSize);
    end = end == std::string_view::npos ? rest.size() : end + 1;
  }
  const std::string_view text = rest.substr(0, end);
  rest.remove_prefix(end);
  return text;
}

/// Bytes of the first `count` lines.
std::size_t bytes_of_lines(std::string_view text, std::size_t count) {
  std::size_t end = 0;
  for (; count > 0; --count) end = text.find('\n', end) + 1;
  return end;
}

/// Gives the rows of a piece on, a row a line; bytes of the lines that were taken.
std::size_t give(const Piece& piece, frame::FunctionRef<bool(const PlainRow&)> take) {
  for (std::size_t n = 0; n < piece.rows.size(); ++n) {
    if (!take(piece.rows[n])) return bytes_of_lines(piece.text, n);
  }
  return piece.parsed;
}

}  // namespace

void take_plain_rows(frame::Crew& crew, frame::TextInput& file, const Data& data,
                     frame::FunctionRef<bool(const PlainRow&)> take) {
  std::string_view rest = file.content().substr(file.tell());
  std::vector<Piece> parsed;
  std::vector<Piece> next(crew.hands() == 1 ? 1 : kPieces * crew.hands());
  bool all = true;
  const auto give_all = [&] {
    for (const Piece& piece : parsed) {
      const std::size_t taken = give(piece, take);
      file.pass(file.tell() + taken);
      all = all && taken == piece.text.size();
      if (!all) return;
    }
  };
  // One hand gives the rows of the last pieces on while the others parse the next ones.
  while (all && (!rest.empty() || !parsed.empty())) {
    for (Piece& piece : next) piece.text = next_text(rest);
    crew.each(1 + next.size(), 1, [&](std::size_t n) {
      if (n == 0) {
        give_all();
      } else {
        parse(data, next[n - 1]);
      }
    });
    if (next.front().text.empty()) return;
    std::swap(parsed, next);
    next.resize(parsed.size());
  }
}

}  // namespace tsrf_module_raddat
