#pragma once
// The hidraw nodes present and the device path of each: what the backend
// looks a path up in when it opens a device, and what the hot-plug watch
// describes a node with.
//
// Where two present nodes would have the same path (virtual devices that
// nothing tells apart), the one that had it keeps it and the other's path gets
// its HID device's sysfs name: unique, though not kept across a replug.
//
// Devices are opened by path all the time: every getter's handle, every
// writer's own handle, and a writer retries its open while its panel is away.
// So a lookup answers from the map, after taking in the kernel's pending
// uevents (one system call when there are none); sysfs is scanned at Init,
// and again only when events were lost.

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/sysfs_hidraw.h"
#include "platform/linux/uevent_source.h"

namespace pelm::linux_hid {

class NodeMap {
 public:
  // `sysfsRoot` is "/sys" on a running system; `kernelEvents` the kernel's
  // uevents, null when they cannot be had (every lookup then scans sysfs, the
  // only way left to see a node that came or went).
  NodeMap(std::string sysfsRoot, std::unique_ptr<UeventSource> kernelEvents);

  const std::string& SysfsRoot() const { return sysfsRoot_; }

  // Reads every node from sysfs afresh; returns them in node-number order.
  std::vector<HidrawNode> Rescan();
  // The node whose device path is `path` (compared without regard to case).
  std::optional<HidrawNode> Find(std::string_view path);
  // Every node present, in node-number order.
  std::vector<HidrawNode> Present();
  // Describes node `name` (e.g. "hidraw3") afresh, as after its add or change
  // event; nullopt when it is gone or not a HID device's node.
  std::optional<HidrawNode> Refresh(const std::string& name);

  // What the last attempt to open the node of `path` (a node's path as this
  // map gives it) gave: 0 or the error number.
  void NoteOpenResult(const std::string& path, int error);
  // True when the last attempt to open the node of `path` failed.
  bool LastOpenFailed(const std::string& path) const;

 private:
  std::vector<HidrawNode> RescanLocked();
  std::optional<HidrawNode> RefreshLocked(const std::string& name);
  // Records `node`, giving it a path no other node has.
  const HidrawNode& PlaceLocked(HidrawNode node);
  // Brings the map up to date: the kernel's pending events, or a scan when
  // there are none to follow.
  void CatchUpLocked();
  // Applies the kernel's pending events; rescans when some were lost.
  void TakeInEventsLocked();

  const std::string sysfsRoot_;
  const std::unique_ptr<UeventSource> kernelEvents_;
  mutable std::mutex mutex_;
  bool scanned_ = false;
  std::map<std::string, HidrawNode> nodes_;  // by node name
  std::map<std::string, int> openErrors_;    // by path
};

}  // namespace pelm::linux_hid
