#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "samples/board/Listeners.h"

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
  virtual Subscription EverySecond(std::function<void()> handler) = 0;
};

struct StorageService {
  static constexpr char kName[] = "storage";
  virtual ~StorageService() = default;
  /// The lines of a table, words between blanks; empty when there is no such table.
  virtual std::string Table(const std::string& name) const = 0;
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
    std::string site;
    std::string text;
    int minuteOfDay;  // when it was published
  };
  using Handler = std::function<void(const Event& event)>;
  virtual ~EventBusService() = default;
  /// The handler runs on the bus's thread and may publish itself.
  virtual Subscription Subscribe(const std::string& topic, Handler handler) = 0;
  /// Returns at once: the event is delivered later.
  virtual void Publish(const std::string& topic, const std::string& site,
                       const std::string& text) = 0;
};

struct DeviceService {
  static constexpr char kName[] = "device";
  struct Device {
    std::string id;
    std::string kind;
    std::string site;
  };
  /// `reading`: what the device reports, once a second as long as it does.
  using Handler = std::function<void(const Device& device, const std::string& reading)>;
  virtual ~DeviceService() = default;
  virtual std::vector<Device> OfKind(const std::string& kind) const = 0;
  virtual Subscription Watch(Handler handler) = 0;
};

struct UserService {
  static constexpr char kName[] = "user";
  virtual ~UserService() = default;
  /// Whose card it is; empty for nobody's.
  virtual std::string OwnerOf(const std::string& card) const = 0;
  virtual bool Has(const std::string& user, const std::string& permission) const = 0;
  virtual std::vector<std::string> With(const std::string& permission) const = 0;
};

struct MapService {
  static constexpr char kName[] = "map";
  virtual ~MapService() = default;
  /// The site nearest to a point in degrees; empty on a map without sites.
  virtual std::string Nearest(double latitude, double longitude) const = 0;
};

struct AlarmService {
  static constexpr char kName[] = "alarm";
  /// The topics of its events: an alarm begins, and is over.
  static constexpr char kBegin[] = "alarm";
  static constexpr char kOver[] = "alarm.over";
  struct Alarm {
    std::string site;
    std::string text;
  };
  virtual ~AlarmService() = default;
  virtual std::vector<Alarm> Open() const = 0;
};

struct ChannelService {
  static constexpr char kName[] = "channel";
  virtual ~ChannelService() = default;
  /// The lowest free channel, or -1.
  virtual int Take() = 0;
  virtual void Give(int channel) = 0;
};

struct CardService {
  static constexpr char kName[] = "card";
  virtual ~CardService() = default;
  /// Whether the number's check digit is right: it is not when the number was misread.
  virtual bool Valid(const std::string& number) const = 0;
};

struct VideoService {
  static constexpr char kName[] = "video";
  virtual ~VideoService() = default;
  /// Has every camera of a site record. Returns how many have begun: not those that record already,
  /// or for which no channel is free.
  virtual std::size_t Record(const std::string& site) = 0;
  virtual void EndRecording(const std::string& site) = 0;
};

struct LinkageService {
  static constexpr char kName[] = "linkage";
  virtual ~LinkageService() = default;
  /// How often an alarm has led to an action.
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

/// What a driver offers, published under its ID. A platform that loads the drivers of its product
/// finds it there; the frame only hands over which they are.
struct DriverService {
  virtual ~DriverService() = default;
  /// What a frame of the device says; empty for a damaged one.
  virtual std::string Decode(const std::string& frame) const = 0;
};
