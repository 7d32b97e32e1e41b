#include "radiation/shade_lines.hpp"

#include <array>
#include <cstring>

#include "frame/numbers.hpp"
#include "frame/plain_column.hpp"

namespace tsrf_module_shade {

namespace {

constexpr std::size_t kMostPieces = 32;
constexpr std::size_t kShortestPiece = 1 << 14;  // bytes

/// What the lines of a block have in common.
struct Block {
  std::span<const std::int32_t> date;  ///< the elements that a line holds
  std::span<const std::int32_t> PID;
};

/// The place behind the end of the line; null when the text ends before.
const char* behind_line(const char* at, const char* last) {
  if (at < last && *at == '\n') return at + 1;
  const auto* const end =
      static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(last - at)));
  return end == nullptr ? nullptr : end + 1;
}

/// Reads lines `n` up to, not including, `behind` of a block; the place behind them, null when one
/// of them is not plain.
template <class Real>
const char* plain_lines(const char* at, const char* last, std::size_t n, std::size_t behind,
                        const Block& block, std::span<Real> row) {
  std::array<frame::PlainColumn, std::tuple_size_v<dated_series::IntDate>> dates;
  frame::PlainColumn indices, PIDs;
  for (; n < behind; ++n) {
    for (std::size_t d = 0; d < block.date.size(); ++d) {
      std::int32_t element = 0;
      at = dates[d].read(at, last, element);
      if (at == nullptr || element != block.date[d]) return nullptr;
    }
    Line line;
    at = indices.read(at, last, line.index);
    if (at != nullptr) at = PIDs.read(at, last, line.PID);
    if (at == nullptr || line.PID != block.PID[n]) return nullptr;
    at = frame::scan_plain_field(at, last, line.fraction);
    if (at != nullptr) at = behind_line(at, last);
    if (at == nullptr) return nullptr;
    if (!row.empty()) row[n] = std::clamp(line.fraction, 0.0F, 1.0F);
  }
  return at;
}

/// Lines of a block that one hand reads.
struct Piece {
  const char* first = nullptr;
  std::size_t line = 0;          ///< that stands first
  const char* behind = nullptr;  ///< where the lines ended; null when one was not plain
};

/// Cuts the `lines` lines from `at` on into pieces of about the same length; their number. The
/// last goes to the end of the block.
std::size_t cut(const char* at, const char* last, std::size_t lines,
                std::array<Piece, kMostPieces>& pieces) {
  const char* const second = behind_line(at, last);
  const auto length = static_cast<std::size_t>((second == nullptr ? last : second) - at);
  const std::size_t size = std::max(kShortestPiece, length * lines / kMostPieces);
  std::size_t count = 0;
  std::size_t line = 0;
  for (;;) {
    pieces[count++] = {at, line};
    if (count == kMostPieces || static_cast<std::size_t>(last - at) <= size) return count;
    const char* const end = behind_line(at + size, last);
    if (end == nullptr) return count;
    line += static_cast<std::size_t>(std::count(at, end, '\n'));
    if (line >= lines) return count;
    at = end;
  }
}

}  // namespace

template <class Real>
bool take_plain_block(frame::Crew& crew, frame::TextInput& file,
                      const tsrf_module_patch::Data& patch, std::span<std::int32_t> date,
                      std::span<Real> row) {
  const std::string_view text = file.content();
  const char* const last = text.data() + text.size();
  const char* at = text.data() + file.tell();
  std::array<std::int32_t, std::tuple_size_v<dated_series::IntDate>> elements{};
  const std::span<std::int32_t> of_block = std::span(elements).first(date.size());
  const char* field = at;
  for (std::int32_t& element : of_block) {
    field = frame::scan_plain_field(field, last, element);
    if (field == nullptr) return false;
  }
  const auto lines = static_cast<std::size_t>(patch.mpatch);
  std::array<Piece, kMostPieces> pieces{{{at, 0}}};
  const std::size_t count = crew.hands() == 1 ? 1 : cut(at, last, lines, pieces);
  const Block block{of_block, patch.PID};
  crew.each(count, 1, [&](std::size_t k) {
    const std::size_t behind = k + 1 < count ? pieces[k + 1].line : lines;
    pieces[k].behind = plain_lines(pieces[k].first, last, pieces[k].line, behind, block, row);
  });
  for (std::size_t k = 0; k < count; ++k) {
    if (pieces[k].behind == nullptr) return false;
  }
  std::ranges::copy(of_block, date.begin());
  file.pass(static_cast<std::size_t>(pieces[count - 1].behind - text.data()));
  return true;
}

template bool take_plain_block(frame::Crew&, frame::TextInput&, const tsrf_module_patch::Data&,
                               std::span<std::int32_t>, std::span<float>);
template bool take_plain_block(frame::Crew&, frame::TextInput&, const tsrf_module_patch::Data&,
                               std::span<std::int32_t>, std::span<double>);

}  // namespace tsrf_module_shade
