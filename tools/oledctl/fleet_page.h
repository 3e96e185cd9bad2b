#ifndef OLEDCTL_FLEET_PAGE_H
#define OLEDCTL_FLEET_PAGE_H

// The fleet page's files, compiled into oledctl: the operator's PC may be
// offline, so nothing is fetched from anywhere else.
namespace fleet {

extern const char* const kPageHtml;
extern const char* const kPageCss;
extern const char* const kPageScript;

}  // namespace fleet

#endif
