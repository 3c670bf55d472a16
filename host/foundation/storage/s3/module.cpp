#include <memory>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/curl_transport.hpp"
#include "foundation/storage/s3/s3_provider.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace {

std::unique_ptr<foundation::storage::s3::Client> makeClient() {
  using namespace foundation::storage::s3;
  Configuration const configuration = readConfiguration();
  return std::make_unique<Client>(configuration, std::make_unique<CurlTransport>(configuration), systemClock());
}

}  // namespace

/// The entry point of a provider module: see foundation/storage/vfs/storage_system.hpp.
extern "C" KORVAN_HOST_EXPORT foundation::storage::vfs::Provider* korvanStorageProvider();

foundation::storage::vfs::Provider* korvanStorageProvider() {
  return new foundation::storage::s3::S3Provider(makeClient);
}
