#pragma once
// What a simulated device does with the reports the library sends it and how it
// answers feature reads: the behaviour of one panel model.

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace pelm::sim {

using Report = std::vector<uint8_t>;

class Panel {
 public:
  virtual ~Panel() = default;
  // Fills `report` (byte 0 holds the requested ID) with the device's answer;
  // false when the device refuses the read.
  virtual bool AnswerFeature(uint8_t* report, uint32_t length) = 0;
  virtual void ReceiveFeature(const uint8_t* report, uint32_t length) = 0;
  virtual void ReceiveOutput(const uint8_t* report, uint32_t length) = 0;
};

// A device that remembers the last feature report set under each report ID and
// answers reads from it (zeros for an ID never set); output reports are only
// logged. Tests preset answers with SetFeatureAnswer.
class GenericPanel : public Panel {
 public:
  bool AnswerFeature(uint8_t* report, uint32_t length) override;
  void ReceiveFeature(const uint8_t* report, uint32_t length) override;
  void ReceiveOutput(const uint8_t* report, uint32_t length) override;

  void SetFeatureAnswer(const Report& report);
  std::optional<Report> LastFeature(uint8_t reportId) const;
  std::optional<Report> LastOutput() const;

 private:
  mutable std::mutex mutex_;
  std::array<std::optional<Report>, 256> features_;
  std::optional<Report> lastOutput_;
};

// The behaviour of the panel model with this product ID (a generic device for
// product IDs that are no panel).
std::unique_ptr<Panel> MakePanel(uint16_t productId);

}  // namespace pelm::sim
