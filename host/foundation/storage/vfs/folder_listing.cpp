#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/detail/name_filter.hpp"
#include "foundation/storage/vfs/folder.hpp"

namespace foundation::storage::vfs {

EntryCursor::EntryCursor(std::shared_ptr<FolderSnapshot const> snapshot, std::shared_ptr<NameFilter const> filter,
                         Folder folder, bool foldersOnly) noexcept
    : snapshot_(std::move(snapshot)),
      filter_(std::move(filter)),
      folder_(std::move(folder)),
      end_(snapshot_->entries.size()),
      foldersOnly_(foldersOnly),
      matchesAll_(filter_->matchesAll()) {}

bool EntryCursor::matches() const {
  if (foldersOnly_ && snapshot_->entries.kind(index_) != PathKind::isFolder) return false;
  return matchesAll_ || filter_->matches(snapshot_->entries.name(index_));
}

bool EntryCursor::next() {
  for (++index_; index_ < end_; ++index_)
    if (matches()) return true;
  return false;
}

std::optional<PathKind> EntryCursor::getKind() const noexcept {
  return snapshot_->entries.kind(index_);
}

bool EntryCursor::isDotName() const noexcept {
  return snapshot_->entries.name(index_).front() == '.';
}

std::u16string EntryCursor::getName() const {
  return core::text::fromBytes(snapshot_->entries.name(index_));
}

void EntryCursor::appendName(std::u16string& text) const {
  core::text::appendFromBytes(text, snapshot_->entries.name(index_));
}

template <class T>
typename FolderListing<T>::Iterator FolderListing<T>::begin() const {
  Iterator first(start_);
  return ++first;
}

template <class T>
typename FolderListing<T>::Iterator FolderListing<T>::end() const {
  Iterator last(start_);
  last.cursor_.index_ = last.cursor_.end_;
  return last;
}

template <class T>
typename FolderListing<T>::Iterator& FolderListing<T>::Iterator::operator++() {
  cursor_.next();
  element_.reset();
  return *this;
}

template <>
void FolderListing<ListEntry>::Iterator::make() const {
  element_ = ListEntry(cursor_.getName(), cursor_.getKind());
}

template <>
void FolderListing<Folder>::Iterator::make() const {
  element_ = cursor_.listedFolder();
}

template class FolderListing<ListEntry>;
template class FolderListing<Folder>;

}  // namespace foundation::storage::vfs
