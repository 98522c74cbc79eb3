// What the service keeps outside its files: platform keys (shared by all applications of the watch; listeners
// are told of every write) and preferences (the service's own). Nothing is cached: every use asks the store.

#pragma once

namespace WatchfaceService {

// Platform keys
// string: id of the current clock application
inline constexpr char kIdleClockKey[] = "db/wms/clocks_set_idle";
// string: the current watch face, meaningful while the current clock is this watch's watch-face viewer
inline constexpr char kWatchfaceNameKey[] = "file/private/com.corvane.watchface/watchface_name";
inline constexpr char kFirstBootKey[] = "db/setup_wizard/first_boot";               // bool
inline constexpr char kReturnedFromWpcKey[] = "db/setup_wizard/returned_from_wpc";  // bool
inline constexpr char kStandaloneKey[] = "db/setup_wizard/standalone";              // int
inline constexpr char kEulaFinishedKey[] = "db/wms/gm_setupwizard_eula_finished";   // bool
inline constexpr char kHostVendorKey[] = "db/wms/host_status/vendor";               // string
inline constexpr char kRetailModeKey[] = "db/retailmode/enabled";                   // int, 0 = off

// Preferences
inline constexpr char kInitialPreviewDonePref[] = "wfs/pref/initial_preview_update_done";  // bool
// string: who asked for the last change of the current watch face. Written only; nothing here reads it.
inline constexpr char kIdleChangeRequesterPref[] = "wfs-pref-idle-change-request-from";
inline constexpr char kWorldClockTargetPref[] = "wfs-watch-name-world-clock-update";  // string

}  // namespace WatchfaceService
