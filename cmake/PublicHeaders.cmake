# The headers that other projects see, in one place; everything else stays in the source tree. A header that one of these includes belongs here too.

target_sources(
  korvan_host
  PUBLIC FILE_SET
         HEADERS
         BASE_DIRS
         "${PROJECT_SOURCE_DIR}/host"
         FILES
         host/export.hpp
         host/fl/filesystem/exception.hpp
         host/fl/filesystem/operations.hpp
         host/fl/filesystem/path.hpp
         host/fl/filesystem/text.hpp
         host/foundation/core/except/base_msg_id.hpp
         host/foundation/core/except/catalogue.hpp
         host/foundation/core/except/exception.hpp
         host/foundation/core/except/internal_exception.hpp
         host/foundation/core/except/msg_id_exception.hpp
         host/foundation/core/except/root_exception.hpp
         host/foundation/core/except/user_exception.hpp
         host/foundation/core/text/bytes.hpp
         host/foundation/storage/vfs/absolute_iri.hpp
         host/foundation/storage/vfs/conversion.hpp
         host/foundation/storage/vfs/entry_table.hpp
         host/foundation/storage/vfs/exception.hpp
         host/foundation/storage/vfs/exists.hpp
         host/foundation/storage/vfs/folder.hpp
         host/foundation/storage/vfs/path_kind.hpp
         host/foundation/storage/vfs/provider.hpp
         host/foundation/storage/vfs/read_session.hpp
         host/foundation/storage/vfs/storage_system.hpp
         host/interpreter/array.hpp
         host/interpreter/array_ptr.hpp
         host/interpreter/dispatcher.hpp
         host/interpreter/errors.hpp
         host/interpreter/string_array.hpp
         host/interrupt/interrupt_exception.hpp
         host/interrupt/interrupt_state.hpp)

target_sources(
  qdkorvanautomationio
  PUBLIC FILE_SET
         HEADERS
         BASE_DIRS
         "${PROJECT_SOURCE_DIR}"
         FILES
         gateway/builtin_glob.hpp
         gateway/load_hooks.hpp
         gateway/message_ids.hpp
         gateway/vx_err_msg_id.hpp
         glob/glob.hpp
         path/export.hpp
         path/path.hpp)
