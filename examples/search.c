// search_c FOLDER PATTERN: prints what matches the pattern in the folder, a path or an IRI, one match a line, as it is
// found. Folders that can't be read are reported, and the exit status is then 2.
#include <kglob.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  kglob_options options = KGLOB_OPTIONS_INIT;
  options.root_folder = argv[1];
  kglob_search* search = kglob_open(argv[2], &options);

  int exit_status = 0;
  const char* block;
  size_t length;
  kglob_status status;
  while ((status = kglob_next_block(search, -1, &block, &length)) == KGLOB_OK && length > 0) {
    for (const char* match = block; match < block + length; match += strlen(match) + 1) puts(match);
    fflush(stdout);
  }
  if (status != KGLOB_OK) {
    const kglob_failure* error = kglob_error(search);
    fprintf(stderr, "%s: %s\n", error->identifier, error->message);
    exit_status = 2;
  }
  for (const kglob_failure* failure; (failure = kglob_next_failure(search)) != NULL; exit_status = 2)
    fprintf(stderr, "%s: %s\n", failure->location, failure->reason);

  kglob_close(search);
  return exit_status;
}
