#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::vfs {

/// Makes IRIs without parsing, for the storage layer, which makes one for each entry of a listing. Internal to it.
struct IRIAccess {
  /// The IRI of a text that is in written form already, with a scheme of that length and a path that begins at that
  /// index; nothing is checked.
  static AbsoluteIRI fromWrittenForm(std::u16string text, std::uint32_t schemeLength,
                                     std::uint32_t pathStart) noexcept {
    return AbsoluteIRI::fromWrittenForm(std::move(text), schemeLength, pathStart);
  }

  /// The folder of all authorities of a scheme in lower case whose IRIs have one.
  static AbsoluteIRI folderOfAuthorities(std::u16string const& scheme) {
    auto const schemeLength = static_cast<std::uint32_t>(scheme.size());
    return fromWrittenForm(scheme + u"://", schemeLength, schemeLength + 2);
  }
};

}  // namespace foundation::storage::vfs
