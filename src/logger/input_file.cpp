// SPDX-License-Identifier: MIT
#include "logger/input_file.h"

#include <algorithm>
#include <new>
#include <utility>

namespace traguardo {

platform::File InputFile::opened(const std::wstring& path) {
  return platform::File::open(path, platform::Access::kRead, platform::Share::kRead, platform::Creation::kMustExist);
}

InputFile::InputFile(platform::File file) : file_(std::move(file)) {
  if (!file_ || !file_.size(&size_)) return;
  window_.reset(new (std::nothrow) u8[kWindow]);
  capacity_ = kWindow;
}

const u8* InputFile::Load(u64 offset, u64 length) {
  const u64 wanted = std::max(length, kWindow);
  from_ = 0;
  end_ = 0;
  if (wanted != capacity_) {
    capacity_ = 0;
    window_.reset();
    window_.reset(new u8[static_cast<std::size_t>(wanted)]);
    capacity_ = wanted;
  }
  const u64 count = std::min(wanted, size_ - offset);
  file_.read_all_at(offset, window_.get(), static_cast<std::size_t>(count));
  from_ = offset;
  end_ = offset + count;
  return window_.get();
}

const u8* InputFile::Look(u64 offset) {
  if (pages_ == nullptr) pages_ = std::make_unique<std::array<Page, kPages>>();
  const u64 number = offset / kPage;
  Page& page = (*pages_)[number % kPages];
  if (page.number != number) {
    page.number = ~u64{0};
    const u64 from = number * kPage;
    file_.read_all_at(from, page.bytes.data(),
                      static_cast<std::size_t>(std::min<u64>(page.bytes.size(), size_ - from)));
    page.number = number;
  }
  return page.bytes.data() + (offset - number * kPage);
}

}  // namespace traguardo
