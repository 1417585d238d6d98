#include "progress.h"

#include "api/exports.h"

namespace traguardo::tool {

int open_with_progress(const std::string& path) {
  return open_file(path.c_str());
}

}  // namespace traguardo::tool
