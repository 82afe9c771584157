#pragma once
// Arrivals and removals of hidraw nodes, from uevents. The source's descriptor
// is what a host polls; nothing runs in the background: events are taken in
// and handed on only inside DispatchPending, on the host's thread.

#include <map>
#include <memory>
#include <string>

#include "platform/linux/node_map.h"
#include "platform/linux/uevent_message.h"
#include "platform/linux/uevent_source.h"
#include "platform/platform.h"

namespace pelm::linux_hid {

class UeventWatch : public platform::DeviceNotifier {
 public:
  // `group` is the one `source` listens to.
  UeventWatch(NodeMap& nodes, std::unique_ptr<UeventSource> source, UeventGroup group,
              platform::DeviceEventHandler handler);

  int EventDescriptor() const override { return source_->Descriptor(); }
  unsigned DispatchPending() override;

 private:
  // Each returns the number of events handed to the handler.
  unsigned Handle(const Uevent& event);
  unsigned Arrive(const std::string& name, const std::string& devpath);
  // A change or a driver's bind: a node not heard of, or one that could not
  // be opened the last time, is reported as arriving; one that opened is not.
  unsigned Reexamine(const std::string& name, const std::string& devpath);
  unsigned ReexamineNodesOf(const std::string& hidDevpath);
  // After the socket's buffer overflowed: sysfs tells what changed.
  unsigned Reconcile();

  NodeMap& nodes_;
  const std::unique_ptr<UeventSource> source_;
  const UeventGroup group_;
  const platform::DeviceEventHandler handler_;
  // A removed node is gone from sysfs when its event comes, so the path of
  // every node is remembered, by its sysfs path, while it is present.
  std::map<std::string, std::string> knownPaths_;
};

}  // namespace pelm::linux_hid
