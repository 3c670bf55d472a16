#include "foundation/storage/vfs/detail/name_filter.hpp"

#include <algorithm>

#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/utf16.hpp"

namespace foundation::storage::vfs {
namespace {

// Whether the text contains an escaped byte, one that isn't UTF-8. Compared as bytes, such a piece could match in the
// middle of a character; other pieces can't, as UTF-8 shows where a character begins.
bool hasEscapedBytes(std::u16string_view text) {
  return std::any_of(text.begin(), text.end(), core::text::isEscapedByte);
}

// Whether the name is pieces[0], any run, pieces[1], any run ... and the last piece. Taking each middle piece where it
// first occurs is right, since that leaves most to the pieces after it: no backtracking is needed.
template <class String, class View = std::basic_string_view<typename String::value_type>>
bool matchesPieces(View name, std::vector<String> const& pieces) {
  String const& first = pieces.front();
  if (pieces.size() == 1) return name == first;
  String const& last = pieces.back();
  if (name.size() < first.size() + last.size() || !name.starts_with(first) || !name.ends_with(last)) return false;
  name.remove_suffix(last.size());
  name.remove_prefix(first.size());
  for (std::size_t i = 1; i + 1 < pieces.size(); ++i) {
    std::size_t const found = name.find(pieces[i]);
    if (found == View::npos) return false;
    name.remove_prefix(found + pieces[i].size());
  }
  return true;
}

}  // namespace

NameFilter::NameFilter(std::u16string const& filter) {
  bool const byText = hasEscapedBytes(filter);
  pieces_.reserve(2);
  for (std::size_t start = 0, end = 0; end != std::u16string::npos; start = end + 1) {
    end = filter.find(u'*', start);
    std::u16string const piece = filter.substr(start, end == std::u16string::npos ? end : end - start);
    std::string bytes;
    none_ = none_ || !core::text::appendBytes(bytes, piece);
    pieces_.push_back(std::move(bytes));
    if (byText) textPieces_.push_back(piece);
  }
  literalHead_ = pieces_.front();
  all_ = !none_ && pieces_.size() > 1 &&
         std::all_of(pieces_.begin(), pieces_.end(), [](auto const& piece) { return piece.empty(); });
}

bool NameFilter::matches(std::string_view name) const {
  if (all_) return true;
  if (none_) return false;
  if (textPieces_.empty()) return matchesPieces(name, pieces_);
  return matchesPieces(std::u16string_view(core::text::fromBytes(name)), textPieces_);
}

}  // namespace foundation::storage::vfs
