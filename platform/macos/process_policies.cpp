#include "platform/macos/process_policies.h"

#include <pthread/qos.h>
#include <sys/resource.h>

namespace dunmere {

void lowerThreadPriority() noexcept {
  const qos_class_t current = ::qos_class_self();
  const bool isLower = current != QOS_CLASS_UNSPECIFIED && current <= QOS_CLASS_UTILITY;
  if (!isLower) ::pthread_set_qos_class_self_np(QOS_CLASS_UTILITY, 0);
}

void keepCloudFilesAway() noexcept {
  ::setiopolicy_np(IOPOL_TYPE_VFS_MATERIALIZE_DATALESS_FILES, IOPOL_SCOPE_PROCESS,
                   IOPOL_MATERIALIZE_DATALESS_FILES_OFF);
}

}  // namespace dunmere
