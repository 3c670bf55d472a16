#include "capi/search_request.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "capi/sized_struct.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "korvan/io/path.hpp"
#include "quindarel/interpreter/dispatcher.hpp"

namespace kglob {
namespace {

namespace vfs = foundation::storage::vfs;
using foundation::core::text::fromBytes;
using korvan::io::internal::Path;

kglob_options knownOptions(kglob_options const* options) {
  kglob_options known = KGLOB_OPTIONS_INIT;
  if (options != nullptr) copyKnown(known, options);
  if (known.facts > KGLOB_ALL_FACTS) throw std::invalid_argument("the options ask for unknown facts");
  if (known.reserved != 0) throw std::invalid_argument("a reserved member is not 0");
  return known;
}

std::u16string absoluteFolder(std::u16string const& folder) {
  Path const path(folder);
  if (isAbsolute(path)) return folder;
  vfs::Folder const current = Kdispatcher::getDispatcher()->GetCurrentWorkingFolder()->get();
  return absolute(path, Path(vfs::fromAbsoluteIRI(current.getLocation()))).string(false);
}

vfs::SessionPolicy policyOf(kglob_options const& options) {
  vfs::SessionPolicy policy{.followLinks = options.dont_follow_links == 0,
                            .oneFileSystem = options.one_file_system != 0,
                            .reportRefusals = options.report_refusals != 0,
                            .collectFacts = options.facts == KGLOB_ALL_FACTS,
                            .readsInFlight = options.reads_in_flight};
  if (options.max_depth != 0) policy.maximumDepth = options.max_depth;
  if (options.excluded_count > 0 && options.excluded_names == nullptr)
    throw std::invalid_argument("the names are null");
  for (std::size_t i = 0; i < options.excluded_count; ++i) {
    if (options.excluded_names[i] == nullptr) throw std::invalid_argument("an excluded name is null");
    policy.excludedNames.push_back(fromBytes(options.excluded_names[i]));
  }
  return policy;
}

}  // namespace

SearchRequest makeRequest(char const* const* patterns, std::size_t count, kglob_options const* options) {
  kglob_options const known = knownOptions(options);
  std::u16string const folder = fromBytes(known.root_folder == nullptr ? "" : known.root_folder);
  bool const rootIsIRI = vfs::hasIRIPrefix(folder);
  SearchRequest request{{},
                        absoluteFolder(folder),
                        known.cache_bytes == 0 ? vfs::ReadSession::defaultMemoryBound : known.cache_bytes,
                        known.include_dot_files != 0,
                        policyOf(known),
                        static_cast<kglob_fact_level>(known.facts)};
  if (count > 0 && patterns == nullptr) throw std::invalid_argument("the patterns are null");
  request.patterns.reserve(std::max(count, std::size_t{1}));
  for (std::size_t i = 0; i < count; ++i) {
    if (patterns[i] == nullptr) throw std::invalid_argument("the pattern is null");
    std::u16string text = fromBytes(patterns[i]);
    bool const usesIRIs = rootIsIRI || vfs::hasIRIPrefix(text);
    request.patterns.push_back({std::move(text), usesIRIs});
  }
  if (count == 0) request.patterns.push_back({{}, rootIsIRI});
  return request;
}

}  // namespace kglob
