#ifndef OLEDCTL_SERVICE_DISCOVERY_H
#define OLEDCTL_SERVICE_DISCOVERY_H

#include <string>
#include <vector>

// The inventory Prometheus reads by its file-based service discovery:
// a JSON list of {"targets": [ADDRESS...], "labels": {NAME: VALUE...}}.
namespace service_discovery {

// The boxes found, added to the list in `existing` (empty text: none yet).
// Every entry there stays as it is, so a box that fell silent keeps its
// target and its alert; a found box that no entry names joins the first
// entry without labels (made when there is none), its targets in address
// order. Empty result: fine, else why `existing` cannot be kept.
std::string merge(const std::string& existing, const std::vector<std::string>& found, std::string& list);

// The file's text; empty when there is no such file. Empty result: fine,
// else the system's reason.
std::string read_file(const std::string& path, std::string& text);

// A reader sees the old file or the new one whole, never a part: a
// temporary file beside it, flushed, renamed over it. The file keeps its
// permissions. Empty result: fine, else a one-line reason.
std::string write_atomically(const std::string& path, const std::string& text);

}  // namespace service_discovery

#endif
