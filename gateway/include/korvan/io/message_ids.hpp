#pragma once

#include <concepts>
#include <string>
#include <utility>

#include "foundation/core/except/base_msg_id.hpp"
#include "korvan/io/export.hpp"

/// The messages that the library raises. The namespaces follow the components; the texts are in the host's catalogue.
/// Arguments are only what the caller wrote and where a failure happened.

namespace KORVAN::automation::io::glob {

/// The builtin was called with an option name without a value.
class KORVAN_IO_EXPORT InvalidNumArgs : public resource_core::BaseMsgID {
 public:
  InvalidNumArgs() : BaseMsgID("KORVAN:automation:io:glob", "InvalidNumArgs") {}
};

/// An option that the builtin doesn't have.
class KORVAN_IO_EXPORT InvalidArgName : public resource_core::BaseMsgID {
 public:
  /// `name` as the caller passed it.
  explicit InvalidArgName(std::u16string name) : BaseMsgID("KORVAN:automation:io:glob", "InvalidArgName", 1) {
    setArgument(0, std::move(name));
  }
};

/// An option's value that is not a scalar of the required kind.
class KORVAN_IO_EXPORT InvalidArgScalar : public resource_core::BaseMsgID {
 public:
  /// `name` as the caller passed it; `kind` is the required kind of value.
  InvalidArgScalar(std::u16string name, std::string kind)
      : BaseMsgID("KORVAN:automation:io:glob", "InvalidArgScalar", 2) {
    setArgument(0, std::move(name));
    setArgument(1, std::move(kind));
  }
};

}  // namespace KORVAN::automation::io::glob

namespace KORVAN::automation::io::FileIO {

/// A failure, local or remote, other than a denied permission.
class KORVAN_IO_EXPORT InvalidFile : public resource_core::BaseMsgID {
 public:
  /// `location` is the path or IRI concerned.
  template <std::convertible_to<std::u16string> Text>
  explicit InvalidFile(Text const& location) : BaseMsgID("KORVAN:automation:io:FileIO", "InvalidFile", 1) {
    setArgument(0, std::u16string(location));
  }
};

}  // namespace KORVAN::automation::io::FileIO

namespace KORVAN::virtualfilesystem {

/// A text that begins like an IRI but isn't a valid one.
class KORVAN_IO_EXPORT invalidIRI : public resource_core::BaseMsgID {
 public:
  /// `iri` is the malformed text.
  template <std::convertible_to<std::u16string> Text>
  explicit invalidIRI(Text const& iri) : BaseMsgID("KORVAN:virtualfilesystem", "invalidIRI", 1) {
    setArgument(0, std::u16string(iri));
  }
};

/// A scheme that no provider serves.
class KORVAN_IO_EXPORT unsupportedProvider : public resource_core::BaseMsgID {
 public:
  /// `scheme` without "://".
  template <std::convertible_to<std::u16string> Text>
  explicit unsupportedProvider(Text const& scheme) : BaseMsgID("KORVAN:virtualfilesystem", "unsupportedProvider", 1) {
    setArgument(0, std::u16string(scheme));
  }
};

/// A location that the caller has no permission to look up or read.
class KORVAN_IO_EXPORT permissionDenied : public resource_core::BaseMsgID {
 public:
  /// `location` is the path or IRI concerned.
  template <std::convertible_to<std::u16string> Text>
  explicit permissionDenied(Text const& location) : BaseMsgID("KORVAN:virtualfilesystem", "permissionDenied", 1) {
    setArgument(0, std::u16string(location));
  }
};

}  // namespace KORVAN::virtualfilesystem

namespace KORVAN::string {

/// A text argument that is neither a string scalar nor a character row vector.
class KORVAN_IO_EXPORT MustBeStringScalarOrCharacterVector : public resource_core::BaseMsgID {
 public:
  MustBeStringScalarOrCharacterVector() : BaseMsgID("KORVAN:string", "MustBeStringScalarOrCharacterVector") {}
};

/// A text argument that is a missing string.
class KORVAN_IO_EXPORT MissingNotSupported : public resource_core::BaseMsgID {
 public:
  MissingNotSupported() : BaseMsgID("KORVAN:string", "MissingNotSupported") {}
};

}  // namespace KORVAN::string
