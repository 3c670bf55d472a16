# The installed headers; all others are private to the source tree. A header that an installed one includes must be
# listed too.

target_sources(
  korvan_host
  PUBLIC FILE_SET
         HEADERS
         BASE_DIRS
         "${PROJECT_SOURCE_DIR}/host"
         FILES
         host/foundation/core/host_export.hpp
         host/fl/filesystem/fsys_exception.hpp
         host/fl/filesystem/operations.hpp
         host/fl/filesystem/basic_path.hpp
         host/fl/filesystem/text.hpp
         host/foundation/core/except/base_msg_id.hpp
         host/foundation/core/except/catalogue.hpp
         host/foundation/core/except/exception_template.hpp
         host/foundation/core/except/internal_exception.hpp
         host/foundation/core/except/msg_id_exception.hpp
         host/foundation/core/except/root_exception.hpp
         host/foundation/core/except/user_exception.hpp
         host/foundation/core/text/ascii.hpp
         host/foundation/core/text/bytes.hpp
         host/foundation/core/text/escape.hpp
         host/foundation/core/text/percent.hpp
         host/foundation/core/text/utf16.hpp
         host/foundation/storage/vfs/absolute_iri.hpp
         host/foundation/storage/vfs/conversion.hpp
         host/foundation/storage/vfs/entry_facts.hpp
         host/foundation/storage/vfs/entry_kind.hpp
         host/foundation/storage/vfs/entry_sink.hpp
         host/foundation/storage/vfs/storage_exception.hpp
         host/foundation/storage/vfs/exists.hpp
         host/foundation/storage/vfs/facts.hpp
         host/foundation/storage/vfs/folder.hpp
         host/foundation/storage/vfs/path_kind.hpp
         host/foundation/storage/vfs/provider.hpp
         host/foundation/storage/vfs/read_session.hpp
         host/foundation/storage/vfs/search_outline.hpp
         host/foundation/storage/vfs/session_policy.hpp
         host/foundation/storage/vfs/storage_system.hpp
         host/quindarel/interpreter/array.hpp
         host/quindarel/interpreter/array_ptr.hpp
         host/quindarel/interpreter/dispatcher.hpp
         host/quindarel/interpreter/errors.hpp
         host/quindarel/interpreter/string_array.hpp
         host/quindarel/interrupt/interrupt_exception.hpp
         host/quindarel/interrupt/interrupt_poll.hpp
         host/quindarel/interrupt/interrupt_state.hpp)

target_sources(
  qdkorvanautomationio
  PUBLIC FILE_SET
         HEADERS
         BASE_DIRS
         "${PROJECT_SOURCE_DIR}/gateway/include"
         "${PROJECT_SOURCE_DIR}/glob/include"
         "${PROJECT_SOURCE_DIR}/path/include"
         FILES
         gateway/include/korvan/io/builtin_glob.hpp
         gateway/include/korvan/io/load_hooks.hpp
         gateway/include/korvan/io/message_ids.hpp
         gateway/include/korvan/io/vx_err_msg_id.hpp
         glob/include/korvan/io/glob.hpp
         path/include/korvan/io/export.hpp
         path/include/korvan/io/path.hpp)
