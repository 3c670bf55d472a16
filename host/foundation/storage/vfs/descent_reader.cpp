#include "foundation/storage/vfs/descent_reader.hpp"

#include <system_error>
#include <utility>

namespace foundation::storage::vfs {
namespace {

// A search of a few folders isn't worth a thread.
constexpr std::size_t descentAfter = 32;

// An order that is no longer followed, not one left for a link or a folder with a dot name.
constexpr std::size_t astrayAfter = 32;

bool sameFolder(AbsoluteIRI const& a, AbsoluteIRI const& b) {
  auto const withoutFinalSeparator = [](std::u16string_view text) {
    if (!text.empty() && text.back() == u'/') text.remove_suffix(1);
    return text;
  };
  return withoutFinalSeparator(a.toString()) == withoutFinalSeparator(b.toString());
}

}  // namespace

std::shared_ptr<FolderReading> DescentReader::read(std::shared_ptr<Provider> const& provider,
                                                   AbsoluteIRI const& location, Receive const& receive) {
  if (ahead_) {
    ReadAhead::Result const* const next = ahead_->front();
    bool const follows = next != nullptr && sameFolder(next->reading->location, location);
    ReadAhead::Result result = follows ? ahead_->take() : endReadingAhead(location, receive);
    if (result.failure) throw Exception(*result.failure);
    if (result.reading) return std::move(result.reading);
  }

  auto const expected = order_.next();
  if (expected && sameFolder(*expected, location)) {
    order_.pass();
    ++inOrder_;
    outOfOrder_ = 0;
  } else {
    order_.avoid(location);
    inOrder_ = 0;
    if (++outOfOrder_ == astrayAfter) {
      order_.clear();
      outOfOrder_ = 0;
    }
  }
  auto reading = readFolder(*provider, location, {});
  order_.enter(*reading);
  if (inOrder_ >= descentAfter && mayReadAhead_) {
    inOrder_ = 0;
    try {
      ahead_ = std::make_unique<ReadAhead>(provider, std::exchange(order_, {}));
    } catch (std::system_error const&) {
      mayReadAhead_ = false;  // no thread to be had: it goes without
    }
  }
  return reading;
}

// Gives the result for the location, should it be among those that were read ahead.
ReadAhead::Result DescentReader::endReadingAhead(AbsoluteIRI const& location, Receive const& receive) {
  order_ = std::move(ahead_->stop());
  ReadAhead::Result wanted;
  while (ahead_->front() != nullptr) {
    ReadAhead::Result result = ahead_->take();
    if (sameFolder(result.reading->location, location)) {
      wanted = std::move(result);
    } else {
      receive(std::move(result));
    }
  }
  ahead_.reset();
  return wanted;
}

}  // namespace foundation::storage::vfs
