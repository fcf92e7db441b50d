#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// What the sample's plugins offer each other. Every member may be called from any thread.

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

struct LicenseService {
  static constexpr char kName[] = "license";
  virtual ~LicenseService() = default;
  virtual bool Permits(const std::string& feature) const = 0;
};

struct EventBusService {
  static constexpr char kName[] = "eventbus";
  struct Event {
    std::string topic;
    std::string text;
    int minuteOfDay;
  };
  using Handler = std::function<void(const Event& event)>;
  virtual ~EventBusService() = default;
  /// Returns a number by which to unsubscribe; no subscription has the number 0. The handler runs
  /// on the publisher's thread and may publish itself.
  virtual int Subscribe(const std::string& topic, Handler handler) = 0;
  /// An event that another thread is publishing meanwhile may still reach the handler. An unknown
  /// number is ignored.
  virtual void Unsubscribe(int subscription) = 0;
  virtual void Publish(const std::string& topic, const std::string& text) = 0;
  /// The last events of a topic, oldest first, for those who subscribe late.
  virtual std::vector<Event> Recent(const std::string& topic) const = 0;
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

struct MapService {
  static constexpr char kName[] = "map";
  virtual ~MapService() = default;
  /// The site nearest to a point in degrees; empty on a map without sites.
  virtual std::string Nearest(double latitude, double longitude) const = 0;
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

struct ReportService {
  static constexpr char kName[] = "report";
  virtual ~ReportService() = default;
  virtual std::string Text() const = 0;
};

struct BackupService {
  static constexpr char kName[] = "backup";
  virtual ~BackupService() = default;
  /// When the last backup was made, for people.
  virtual std::string Last() const = 0;
};
