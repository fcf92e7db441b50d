#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// What the sample's plugins offer each other.

struct ConfigService {
  static constexpr char kName[] = "config";
  virtual ~ConfigService() = default;
  virtual std::string Value(const std::string& key, const std::string& fallback) const = 0;
};

struct ClockService {
  static constexpr char kName[] = "clock";
  virtual ~ClockService() = default;
  /// Minutes since midnight, UTC, and day of the week (0 is Sunday).
  virtual int MinuteOfDay() const = 0;
  virtual int DayOfWeek() const = 0;
};

struct StorageService {
  static constexpr char kName[] = "storage";
  virtual ~StorageService() = default;
  virtual void Put(const std::string& key, const std::string& value) = 0;
  virtual std::string Get(const std::string& key) const = 0;
};

struct EventBusService {
  static constexpr char kName[] = "eventbus";
  using Handler = std::function<void(const std::string& text)>;
  virtual ~EventBusService() = default;
  /// Returns a number by which to unsubscribe.
  virtual int Subscribe(const std::string& topic, Handler handler) = 0;
  virtual void Unsubscribe(int subscription) = 0;
  virtual void Publish(const std::string& topic, const std::string& text) = 0;
};

struct DeviceService {
  static constexpr char kName[] = "device";
  struct Device {
    std::string id;
    std::string kind;
    std::string site;
  };
  virtual ~DeviceService() = default;
  virtual std::vector<Device> OfKind(const std::string& kind) const = 0;
};

struct UserService {
  static constexpr char kName[] = "user";
  virtual ~UserService() = default;
  virtual bool Has(const std::string& user, const std::string& permission) const = 0;
};

struct AlarmService {
  static constexpr char kName[] = "alarm";
  virtual ~AlarmService() = default;
  virtual std::size_t Open() const = 0;
  virtual bool Acknowledge(int alarm) = 0;
};

struct VideoService {
  static constexpr char kName[] = "video";
  virtual ~VideoService() = default;
  /// The recording of a camera at a second, or -1.
  virtual int RecordingAt(const std::string& camera, std::int64_t second) const = 0;
};

struct LinkageService {
  static constexpr char kName[] = "linkage";
  virtual ~LinkageService() = default;
  virtual int Fired() const = 0;
};
