#include "foundation/storage/s3/credentials/process_source.hpp"

#include <system_error>
#include <utility>

#include <sys/wait.h>

#include "foundation/storage/s3/credentials/json_credentials.hpp"
#include "foundation/storage/s3/credentials/shell_command.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr std::size_t maximumOutput = std::size_t{64} << 10;

CommandResult run(std::string const& command) {
  try {
    return runShellCommand(command, maximumOutput);
  } catch (std::system_error const& error) {
    throw CredentialsError(std::string("the command can't be started: ") + error.what());
  }
}

}  // namespace

ProcessSource::ProcessSource(std::string const& profile, std::string command)
    : name_("the credential_process of the profile \"" + profile + '"'), command_(std::move(command)) {}

std::optional<Credentials> ProcessSource::fetch() {
  CommandResult const result = run(command_);
  if (result.tooLarge) throw CredentialsError("the command writes more than 64 KiB");
  if (result.statusKnown && WIFSIGNALED(result.status))
    throw CredentialsError("the command was ended by signal " + std::to_string(WTERMSIG(result.status)));
  if (result.statusKnown && WEXITSTATUS(result.status) != 0)
    throw CredentialsError("the command ended with status " + std::to_string(WEXITSTATUS(result.status)));
  return parseProcessOutput(result.output);
}

}  // namespace foundation::storage::s3
