#ifndef KGLOB_H
#define KGLOB_H

#include <stddef.h>
#include <stdint.h>

/// File search by wildcard patterns, on local disks and in object stores, for every language that can call C:
///
///     kglob_search* search = kglob_open("**/*.csv", NULL);
///     const char* block;
///     size_t length;
///     kglob_status status;
///     while ((status = kglob_next_block(search, -1, &block, &length)) == KGLOB_OK && length > 0)
///       for (const char* match = block; match < block + length; match += strlen(match) + 1) puts(match);
///     if (status != KGLOB_OK) fprintf(stderr, "%s\n", kglob_error(search)->message);
///     kglob_close(search);
///
/// A search is a handle. It runs on a thread of its own from `kglob_open` on, no more than a block of matches ahead of
/// the caller, who takes the matches block by block as they are found. Its memory doesn't grow with the number of
/// matches: it consists of two blocks, a cache with a bound (`cache_bytes`), and the failures that were found.
///
/// Patterns: "*" matches any run of characters within a name, "**" as a segment of its own any number of folders, and a
/// "/" at the end restricts the search to folders. Every other character stands for itself. Wildcards pass over names
/// that begin with "." unless `include_dot_files` is set; a segment that begins with "." itself matches them. A pattern
/// is relative to the root folder, and then so are its matches; or it is absolute ("/srv/*"), or an IRI
/// ("s3://bucket/*"). Matches come in the order of the walk: the entries of a folder in byte order, each folder before
/// what is below it. A match found in two ways is given twice. Each folder is read once, so all matches show it in the
/// same state.
///
/// A search may have several patterns (`kglob_open_patterns`). They are searched one after the other and share what was
/// read. Each has an end of its own, and an error ends only the pattern that it concerns:
///
///     do {
///       while ((status = kglob_next_block(search, -1, &block, &length)) == KGLOB_OK && length > 0) ...
///       if (status != KGLOB_OK) ...
///     } while (kglob_next_pattern(search));
///
/// Text: every text is a sequence of bytes ended by NUL. Names are bytes as the disk has them, in no particular
/// encoding; they are neither checked nor changed. Messages are one line of UTF-8.
///
/// Errors are values: no function throws, ends the process, changes a signal's action or writes to a standard stream. A
/// null search, which `kglob_open` returns when there is no memory, is accepted by every function and acts as a search
/// that ended with `KGLOB_OUT_OF_MEMORY`.
///
/// Threads: any thread may open searches, and several searches may run at a time. One search may be used by several
/// threads, one at a time; only `kglob_cancel` and `kglob_get_progress` may be called at any moment from the end of
/// `kglob_open` to the call of `kglob_close`. The threads of a search block all signals. A child process made by `fork`
/// doesn't inherit them: there, an inherited search gives `KGLOB_FAILED`, and closing it frees nothing. Close every
/// search before the process returns from `main` or calls `exit`, and before the library is unloaded.
///
/// Compatibility: structures grow at their end only, and a program that was built against an older header keeps
/// working.

#if defined(__GNUC__)
#define KGLOB_API __attribute__((visibility("default")))
#else
#define KGLOB_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// A search, owned by the caller from `kglob_open` to `kglob_close`.
typedef struct kglob_search kglob_search;

/// What a function returns, and of which kind an error is. The numbers never change; later versions may add some.
typedef enum kglob_status {
  KGLOB_OK = 0,
  KGLOB_TIMED_OUT = 1,           ///< not an error: there was no block within the time
  KGLOB_FAILED = 2,              ///< anything that isn't listed below
  KGLOB_INVALID_ARGUMENT = 3,    ///< a null pattern, or options that this library doesn't know
  KGLOB_INVALID_IRI = 4,         ///< a pattern or root folder begins like an IRI but isn't a valid one
  KGLOB_UNSUPPORTED_SCHEME = 5,  ///< no storage provider serves an IRI's scheme
  KGLOB_NOT_FOUND = 6,           ///< something that has to exist doesn't, such as the current folder
  KGLOB_PERMISSION_DENIED = 7,   ///< permission to look up or read a location is denied
  KGLOB_INACCESSIBLE = 8,        ///< a location can't be looked up or read for another reason
  KGLOB_INTERRUPTED = 9,         ///< ended by `kglob_cancel`
  KGLOB_OUT_OF_MEMORY = 10
} kglob_status;

/// What a search tells about each match besides its text; see `kglob_get_facts`.
typedef enum kglob_fact_level {
  KGLOB_NO_FACTS = 0,
  KGLOB_KINDS = 1,  ///< the kind only; costs nothing where a folder's listing says what its entries are
  KGLOB_ALL_FACTS =
      2  ///< everything; costs one system call for each match on a disk, and nothing in a store that was listed
} kglob_fact_level;

/// How to search. Initialised with `KGLOB_OPTIONS_INIT`; a member that is zero has its default.
///
/// What `excluded_names`, `dont_follow_links`, `one_file_system` and `max_depth` leave out is not read either. They
/// apply below the start folder of each pattern, which is the part before its first wildcard: nothing that this part
/// names is left out.
///
/// `reads_in_flight` counts what is being read or requested at one time, that of the search's own thread included. With
/// 1 the search has no other thread; more than 64 count as 64. It limits reads that wait, as on network file systems
/// and in stores; reads that compute take no more threads than there are processors. No match depends on it.
typedef struct kglob_options {
  size_t size;              ///< sizeof(kglob_options)
  const char* root_folder;  ///< a local path or an IRI; null or empty: the process's current folder
  size_t cache_bytes;       ///< bound of the cache of folders, about; when exceeded, folders are read again; 0: 256 MiB
  uint32_t include_dot_files;         ///< nonzero: wildcards also match names that begin with "."
  uint32_t dont_follow_links;         ///< nonzero: "**" lists a link to a folder and doesn't enter it
  const char* const* excluded_names;  ///< entries to leave out, with all below; "*" is any run of characters
  size_t excluded_count;
  uint32_t one_file_system;  ///< nonzero: a folder on another file system than the start folder is listed, not entered
  uint32_t report_refusals;  ///< nonzero: a name behind a wildcard that may not be looked up is a failure, not an error
  uint32_t max_depth;        ///< how many levels below the start folder matches may be; 0: any number
  uint32_t facts;            ///< a `kglob_fact_level`
  uint32_t reads_in_flight;  ///< the most at once; see above; 0: 32 on a disk, 16 in a store
  uint32_t reserved;         ///< 0
} kglob_options;

/// The defaults, to initialise `kglob_options` with.
#define KGLOB_OPTIONS_INIT \
  { sizeof(kglob_options), NULL, 0, 0, 0, NULL, 0, 0, 0, 0, KGLOB_NO_FACTS, 0, 0 }

/// What a match is. A link is neither a file nor a folder, whatever it points to.
typedef enum kglob_kind { KGLOB_UNKNOWN = 0, KGLOB_FILE = 1, KGLOB_FOLDER = 2, KGLOB_LINK = 3 } kglob_kind;

/// Bits of `kglob_facts.known`.
enum { KGLOB_HAS_BYTES = 1, KGLOB_HAS_TIME = 2 };

/// What is known of a match. No text is null; one that there is nothing for is empty.
typedef struct kglob_facts {
  size_t size;               ///< sizeof(kglob_facts), set by the caller
  uint32_t kind;             ///< a `kglob_kind`; `KGLOB_UNKNOWN` if it couldn't be looked up or no longer exists
  uint32_t known;            ///< `KGLOB_HAS_...`: which of the next members are set
  uint64_t bytes;            ///< the size; folders in stores have none
  int64_t modified_seconds;  ///< the time of the last change of the contents, since 1970-01-01T00:00:00Z
  uint32_t modified_nanoseconds;
  uint32_t reserved;
  const char* etag;           ///< an object's entity tag, without quotation marks
  const char* storage_class;  ///< an object's storage class as its store calls it, such as "STANDARD"
} kglob_facts;

/// An error that ended a search, or a folder that a search couldn't read. No text is null; one that there is nothing
/// for is empty. The location is what the failure is about: a path or an IRI, the text that isn't a valid IRI, or the
/// scheme that isn't served. It is written as an IRI if the pattern or the root folder is one, and otherwise as an
/// absolute local path.
typedef struct kglob_failure {
  kglob_status status;
  const char* identifier;  ///< for programs, such as "KORVAN:virtualfilesystem:permissionDenied"
  const char* message;     ///< for people
  const char* location;    ///< bytes
  const char* reason;      ///< what the system or the store reported, such as "Permission denied"
} kglob_failure;

/// What a search has read so far.
typedef struct kglob_progress {
  size_t size;        ///< sizeof(kglob_progress), set by the caller
  uint64_t folders;   ///< folders listed
  uint64_t entries;   ///< entries of those folders
  uint64_t requests;  ///< requests to object stores, repeated ones included
  uint64_t bytes;     ///< bytes that object stores answered
} kglob_progress;

/// How this process uses object stores, beyond what environment variables and profiles say. Initialised with
/// `KGLOB_OBJECT_STORE_INIT`; a member that is null, empty or zero leaves the decision to those.
typedef struct kglob_object_store {
  size_t size;               ///< sizeof(kglob_object_store)
  const char* endpoint_url;  ///< the server, such as "https://store.example:9000"
  const char* region;
  const char* profile;       ///< a section of the profile files; the environment's access keys are then ignored
  uint32_t no_sign_request;  ///< nonzero: requests are not signed, as for public buckets; no credentials are looked for
  uint32_t requester_pays;   ///< nonzero: requests say that the requester pays for them
} kglob_object_store;

/// Nothing set, to initialise `kglob_object_store` with.
#define KGLOB_OBJECT_STORE_INIT \
  { sizeof(kglob_object_store), NULL, NULL, NULL, 0, 0 }

/// Replaces the process's settings; null sets none. To be called before the first search of a store, since later calls
/// may have no effect. The texts are copied; what is wrong with them is an error of the searches. Returns `KGLOB_OK`,
/// `KGLOB_INVALID_ARGUMENT` for a size that this library doesn't know, as for `kglob_options`, or
/// `KGLOB_OUT_OF_MEMORY`. For any thread.
KGLOB_API kglob_status kglob_configure_object_store(const kglob_object_store* settings);

/// Starts a search and returns it. `options` may be null for the defaults; the texts are copied. An empty pattern
/// matches nothing.
///
/// Null if there is no memory. Every other error, an invalid argument included, is reported by `kglob_next_block`.
/// Options are invalid if `size` is smaller than that member itself, or if they are larger than this library's and have
/// a nonzero byte beyond those: they would ask for something that this library can't do. What smaller options lack has
/// its default.
///
/// Starts a thread; a relative root folder costs one system call, to resolve it against the current folder. Everything
/// else happens on the search's thread.
KGLOB_API kglob_search* kglob_open(const char* pattern, const kglob_options* options);

/// As `kglob_open`, for `count` patterns in this order; none at all match nothing. An invalid argument, such as a null
/// pattern, a root folder that can't be resolved and a thread that can't be started are errors of the whole search.
KGLOB_API kglob_search* kglob_open_patterns(const char* const* patterns, size_t count, const kglob_options* options);

/// The next matches of the current pattern, at first the only or first one: sets `*bytes` to a block of whole matches,
/// each ended by NUL, and `*length` to the block's size. The block belongs to the search and is valid until the next
/// call, `kglob_next_pattern` or `kglob_close`. It comes as soon as 64 KiB of matches are there, or 20 milliseconds
/// have passed since its first match was found, or the search is at its end; the first match of a search comes at once.
///
/// - `KGLOB_OK` with a length greater than 0: a block.
/// - `KGLOB_OK` with the length 0: the end; all matches of the pattern have been given.
/// - `KGLOB_TIMED_OUT`: there was no block within `timeout_ms` milliseconds, and the search goes on. A negative timeout
///   waits as long as it takes; 0 doesn't wait.
/// - Anything else: the error that ended the search for the pattern; see `kglob_error`. The matches found before it
///   have been given.
///
/// After the end and after an error further calls return the same, until `kglob_next_pattern` is called. Unless a block
/// is returned the length is 0 and `*bytes` is null.
KGLOB_API kglob_status kglob_next_block(kglob_search* search, int timeout_ms, const char** bytes, size_t* length);

/// Sets the members of `*facts` that its size includes, those that this library doesn't know to 0, to what is known of
/// the match at `index` in the current block, counted from 0. The texts belong to the search and are valid as long as
/// the block. Returns nonzero; if there is no such match or the options asked for no facts it returns 0, and nothing is
/// known.
KGLOB_API int kglob_get_facts(const kglob_search* search, size_t index, kglob_facts* facts);

/// Goes on to the next pattern, whose matches `kglob_next_block` then returns, and returns nonzero. Returns 0 and does
/// nothing if `kglob_next_block` hasn't returned the end or an error of the current pattern yet, if that pattern is the
/// last, or after an error of the whole search: `KGLOB_INTERRUPTED`, `KGLOB_OUT_OF_MEMORY`, or one that
/// `kglob_open_patterns` lists. Never waits.
KGLOB_API int kglob_next_pattern(kglob_search* search);

/// The error of the current pattern that `kglob_next_block` returned, valid until `kglob_next_pattern` or
/// `kglob_close`; null if it hasn't returned one. Owned by the search.
KGLOB_API const kglob_failure* kglob_error(const kglob_search* search);

/// The next folder that couldn't be read, or entry that couldn't be looked at, and that the search for the current or
/// an earlier pattern passed over: each once, in the order of the failures. If there is none, the matches are complete.
/// A folder that doesn't exist is no failure, nor is one that is passed over because it closes a cycle of links. One
/// with the status `KGLOB_OK` is a note: the matches are complete, but cost more than usual, and the reason says why.
///
/// Owned by the search, and valid until the next call or `kglob_close`. Null if there is no further one at the moment;
/// once `kglob_next_block` has returned the end or an error, all those of the pattern are known. Never waits.
KGLOB_API const kglob_failure* kglob_next_failure(kglob_search* search);

/// Ends a search that is still running: it stops within about a tenth of a second, or when the system call in progress
/// returns, and `kglob_next_block` then returns `KGLOB_INTERRUPTED`, after the matches found before. Doesn't wait. For
/// any thread, and for signal handlers.
KGLOB_API void kglob_cancel(kglob_search* search);

/// Sets the members of `*progress` that its size includes, those that this library doesn't know to 0. The counts only
/// grow. Never waits for the search. For any thread.
KGLOB_API void kglob_get_progress(const kglob_search* search, kglob_progress* progress);

/// Frees the search and everything that it returned. Cancels a search that is still running and waits for its threads
/// to end; see `kglob_cancel` for how long that takes.
KGLOB_API void kglob_close(kglob_search* search);

#ifdef __cplusplus
}
#endif

#endif
