#include "radiation/view_factor_rows.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "frame/numbers.hpp"

namespace tsrf_module_raddat {

namespace {

constexpr std::size_t kPieceSize = 1 << 20;
constexpr std::size_t kPieces = 2;  // for each hand before they are taken

struct Piece {
  std::string_view text;
  std::vector<PlainRow> rows;
  std::vector<std::uint32_t> begins;  // of the rows' lines in the text
  std::size_t parsed = 0;             // bytes of the text that the rows stand for
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
  piece.begins.clear();
  const char* const first = piece.text.data();
  const char* const last = first + piece.text.size();
  const char* at = first;
  while (at < last) {
    const auto* const end =
        static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(last - at)));
    PlainRow row{};
    if (end == nullptr || !plain_row(at, end + 1, data, row)) break;
    piece.rows.push_back(row);
    piece.begins.push_back(static_cast<std::uint32_t>(at - first));
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

/// Gives the rows of a piece on; bytes of the lines that were taken.
std::size_t give(const Piece& piece, frame::FunctionRef<bool(const PlainRow&)> take) {
  for (std::size_t n = 0; n < piece.rows.size(); ++n) {
    if (!take(piece.rows[n])) return piece.begins[n];
  }
  return piece.parsed;
}

}  // namespace

void take_plain_rows(frame::Crew& crew, frame::TextInput& file, const Data& data,
                     frame::FunctionRef<bool(const PlainRow&)> take) {
  std::vector<Piece> pieces(crew.hands() == 1 ? 1 : kPieces * crew.hands());
  std::string_view rest = file.content().substr(file.tell());
  while (!rest.empty()) {
    for (Piece& piece : pieces) piece.text = next_text(rest);
    crew.each(pieces.size(), 1, [&](std::size_t n) { parse(data, pieces[n]); });
    for (const Piece& piece : pieces) {
      const std::size_t taken = give(piece, take);
      file.pass(file.tell() + taken);
      if (taken < piece.text.size()) return;
    }
  }
}

}  // namespace tsrf_module_raddat
