// A rowlink over an adapter's link.
//
// `AnyLink` is a DataLink that also offers ShutDown, Cancel and LastError.
#pragma once

#include <memory>
#include <utility>

#include "sabrel/platform/rowlink.h"

namespace sabrel {

template <class AnyLink>
class RowlinkOf final : public LinkedRowlink {
 public:
  explicit RowlinkOf(std::shared_ptr<AnyLink> link) : LinkedRowlink(link), link_(std::move(link)) {}

  void ShutDown() override { link_->ShutDown(); }
  [[nodiscard]] DatabaseError LastDatabaseError() const override { return link_->LastError(); }
  void Cancel() noexcept override { link_->Cancel(); }

 private:
  std::shared_ptr<AnyLink> link_;
};

}  // namespace sabrel
