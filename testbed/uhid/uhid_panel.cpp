#include "testbed/uhid/uhid_panel.h"

#include <fcntl.h>
#include <linux/input.h>
#include <linux/uhid.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace pelm::vm {
namespace {

constexpr char kUhidNode[] = "/dev/uhid";
void CopyText(uint8_t* field, std::size_t capacity, const std::string& text) {
  std::memcpy(field, text.data(), std::min(text.size(), capacity - 1));
}

}  // namespace

UhidPanel::UhidPanel(PanelIdentity identity, std::unique_ptr<sim::Panel> behaviour)
    : identity_(std::move(identity)),
      behaviour_(std::move(behaviour)),
      uhid_(open(kUhidNode, O_RDWR | O_CLOEXEC)),
      stop_(eventfd(0, EFD_CLOEXEC)) {
  if (identity_.reportLength < 2 || identity_.reportLength > kLongestReport) {
    throw std::invalid_argument("report length " + std::to_string(identity_.reportLength) + " is outside 2.." +
                                std::to_string(kLongestReport));
  }
  if (uhid_ < 0 || stop_ < 0) throw std::runtime_error(std::string("cannot open /dev/uhid: ") + strerror(errno));
  Create();
  server_ = std::thread([this] { Serve(); });
}

UhidPanel::~UhidPanel() {
  const uint64_t one = 1;
  (void)!write(stop_, &one, sizeof one);
  server_.join();
  close(uhid_);  // closing the uhid descriptor removes the device
  close(stop_);
}

bool UhidPanel::Send(const void* event, std::size_t size) {
  return write(uhid_, event, size) == static_cast<ssize_t>(size);
}

void UhidPanel::Create() {
  uhid_event event{};
  event.type = UHID_CREATE2;
  uhid_create2_req& create = event.u.create2;
  CopyText(create.name, sizeof create.name, "PELMDEV test panel");
  CopyText(create.phys, sizeof create.phys, identity_.phys);
  CopyText(create.uniq, sizeof create.uniq, identity_.serial);
  const std::vector<uint8_t> descriptor = PanelReportDescriptor(identity_.reportLength);
  create.rd_size = static_cast<uint16_t>(descriptor.size());
  std::memcpy(create.rd_data, descriptor.data(), descriptor.size());
  create.bus = BUS_USB;
  create.vendor = identity_.vendorId;
  create.product = identity_.productId;
  if (!Send(&event, sizeof event)) throw std::runtime_error(std::string("UHID_CREATE2 failed: ") + strerror(errno));
}

void UhidPanel::Unplug() {
  uhid_event event{};
  event.type = UHID_DESTROY;
  Send(&event, sizeof event);
}

void UhidPanel::Replug() { Create(); }

bool UhidPanel::InjectInput(const Report& report) {
  uhid_event event{};
  if (report.empty() || report.size() > sizeof event.u.input2.data) return false;
  event.type = UHID_INPUT2;
  event.u.input2.size = static_cast<uint16_t>(report.size());
  std::memcpy(event.u.input2.data, report.data(), report.size());
  return Send(&event, sizeof event);
}

void UhidPanel::FailNextSends(int count) { transfers_.RefuseNext(count); }

void UhidPanel::FailFeatureReads(bool fail) {
  std::lock_guard hold(mutex_);
  failFeatureReads_ = fail;
}

std::vector<Transfer> UhidPanel::Received() const { return transfers_.All(); }

void UhidPanel::ClearReceived() { transfers_.Clear(); }

std::vector<Transfer> UhidPanel::TakeReceived() { return transfers_.Take(); }

bool UhidPanel::WaitForReceived(const std::function<bool(const std::vector<Transfer>&)>& predicate,
                                std::chrono::milliseconds timeout) const {
  return transfers_.WaitFor(predicate, timeout);
}

bool UhidPanel::IsOpen() const {
  constexpr auto kLongestCatchUp = std::chrono::seconds(10);
  constexpr auto kRecheck = std::chrono::milliseconds(1);
  const auto end = std::chrono::steady_clock::now() + kLongestCatchUp;
  std::unique_lock hold(mutex_);
  for (;;) {
    pollfd waiting{uhid_, POLLIN, 0};
    const bool eventWaits = poll(&waiting, 1, 0) > 0 && (waiting.revents & POLLIN) != 0;
    if ((!handling_ && !eventWaits) || std::chrono::steady_clock::now() >= end) return open_;
    changed_.wait_for(hold, kRecheck);
  }
}

void UhidPanel::AnswerGetReport(uint32_t requestId, uint8_t reportId) {
  uhid_event reply{};
  reply.type = UHID_GET_REPORT_REPLY;
  reply.u.get_report_reply.id = requestId;
  bool fail;
  {
    std::lock_guard hold(mutex_);
    fail = failFeatureReads_;
  }
  const Report report = fail ? Report() : FeatureAnswer(reportId);
  if (report.empty()) {
    reply.u.get_report_reply.err = EIO;
  } else {
    reply.u.get_report_reply.size = static_cast<uint16_t>(report.size());
    std::memcpy(reply.u.get_report_reply.data, report.data(), report.size());
  }
  Send(&reply, sizeof reply);
}

Report UhidPanel::FeatureAnswer(uint8_t reportId) const {
  Report report(identity_.reportLength, 0);
  report[0] = reportId;
  if (!behaviour_->AnswerFeature(report.data(), static_cast<uint32_t>(report.size()))) return {};
  return report;
}

void UhidPanel::AnswerSetReport(uint32_t requestId, const uint8_t* data, uint16_t size) {
  const bool refuse = transfers_.TakeRefusal();
  if (!refuse) behaviour_->ReceiveFeature(data, size);
  transfers_.Add(TransferKind::Feature, data, size, !refuse);
  uhid_event reply{};
  reply.type = UHID_SET_REPORT_REPLY;
  reply.u.set_report_reply.id = requestId;
  reply.u.set_report_reply.err = refuse ? EIO : 0;
  Send(&reply, sizeof reply);
}

void UhidPanel::Serve() {
  pollfd waits[] = {{uhid_, POLLIN, 0}, {stop_, POLLIN, 0}};
  for (;;) {
    if (poll(waits, 2, -1) < 0 && errno != EINTR) return;
    if (waits[1].revents != 0) return;
    if ((waits[0].revents & POLLIN) == 0) continue;
    uhid_event event{};
    {
      std::lock_guard hold(mutex_);
      handling_ = true;
    }
    if (read(uhid_, &event, sizeof event) <= 0) {
      std::lock_guard hold(mutex_);
      handling_ = false;
      continue;
    }
    switch (event.type) {
      case UHID_OPEN:
      case UHID_CLOSE: {
        std::lock_guard hold(mutex_);
        open_ = event.type == UHID_OPEN;
        break;
      }
      case UHID_GET_REPORT:
        AnswerGetReport(event.u.get_report.id, event.u.get_report.rnum);
        break;
      case UHID_SET_REPORT:
        AnswerSetReport(event.u.set_report.id, event.u.set_report.data, event.u.set_report.size);
        break;
      case UHID_OUTPUT:
        behaviour_->ReceiveOutput(event.u.output.data, event.u.output.size);
        transfers_.Add(TransferKind::Output, event.u.output.data, event.u.output.size, true);
        break;
      default:
        break;
    }
    std::lock_guard hold(mutex_);
    handling_ = false;
    changed_.notify_all();
  }
}

}  // namespace pelm::vm
