// SPDX-License-Identifier: MIT
#include "page/shell.h"

namespace traguardo::tool {

const std::string_view kPageBegin;
const std::string_view kPageBody;
const std::string_view kPageEnd;

}  // namespace traguardo::tool
