#include "platform/file_error.h"

#include "core/mirelo_error.h"

#include <cerrno>
#include <cstring>

namespace mirelo::platform {

void RaiseFileError(int error) {
    switch (error) {
    case ENOENT:
        runtime::raise(runtime::FileNotFound);
    case ENOTDIR:
        runtime::raise(runtime::PathNotFound);
    case EEXIST:
        runtime::raise(runtime::FileAlreadyExists);
    case EACCES:
    case EPERM:
    case EROFS:
        runtime::raise(runtime::PermissionDenied);
    default:
        throw MireloError(runtime::PermissionDenied,
                          runtime::description(runtime::PermissionDenied) + " (" +
                              std::strerror(error) + ")");
    }
}

} // namespace mirelo::platform
