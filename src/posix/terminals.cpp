// Terminal attributes, speeds, line control and foreground process groups.
#include "posix/file_name.h"
#include "records/records.h"

#include <termios.h>
#include <unistd.h>

using namespace qxport;

namespace {

constexpr int CONTROL_CHARACTERS = std::extent_v<decltype(TermiosRecord::c_cc)>;
static_assert(CONTROL_CHARACTERS <= NCCS);

TermiosRecord *find_termios(int32_t handle, int32_t *ierror) {
  return find_record_as<TermiosRecord>(handle, Kind::Termios, ierror);
}

// The speeds stand in the flags, or apart from them with C libraries that know speeds of any number: there
// they are what the host stored, and zero in a record that it never filled.
termios host_attributes(const TermiosRecord &record) {
  termios attributes = {};
  attributes.c_iflag = static_cast<tcflag_t>(record.c_iflag);
  attributes.c_oflag = static_cast<tcflag_t>(record.c_oflag);
  attributes.c_cflag = static_cast<tcflag_t>(record.c_cflag);
  attributes.c_lflag = static_cast<tcflag_t>(record.c_lflag);
  for (int i = 0; i < CONTROL_CHARACTERS; ++i)
    attributes.c_cc[i] = static_cast<cc_t>(record.c_cc[i]);
  attributes.c_ispeed = record.c_ispeed;
  attributes.c_ospeed = record.c_ospeed;
  return attributes;
}

void fill(TermiosRecord *record, const termios &attributes) {
  record->c_iflag = static_cast<int32_t>(attributes.c_iflag);
  record->c_oflag = static_cast<int32_t>(attributes.c_oflag);
  record->c_cflag = static_cast<int32_t>(attributes.c_cflag);
  record->c_lflag = static_cast<int32_t>(attributes.c_lflag);
  for (int i = 0; i < CONTROL_CHARACTERS; ++i)
    record->c_cc[i] = attributes.c_cc[i];
  record->c_ispeed = attributes.c_ispeed;
  record->c_ospeed = attributes.c_ospeed;
}

void get_speed(speed_t (*get)(const termios *), int32_t jtermios, int32_t *speed, int32_t *ierror) {
  const TermiosRecord *record = find_termios(jtermios, ierror);
  if (record == nullptr)
    return;
  const termios attributes = host_attributes(*record);
  *speed = static_cast<int32_t>(get(&attributes));
  *ierror = 0;
}

// The record is written back whether the host took the speed or not.
void set_speed(int (*set)(termios *, speed_t), int32_t jtermios, int32_t speed, int32_t *ierror) {
  TermiosRecord *record = find_termios(jtermios, ierror);
  if (record == nullptr)
    return;
  termios attributes = host_attributes(*record);
  report(set(&attributes, static_cast<speed_t>(speed)), ierror);
  fill(record, attributes);
}

}  // namespace

// CALL PXFTCGETATTR(IFILDES, JTERMIOS, IERROR)
void pxftcgetattr_(const int32_t *ifildes, const int32_t *jtermios, int32_t *ierror) {
  TermiosRecord *record = find_termios(*jtermios, ierror);
  if (record == nullptr)
    return;
  termios attributes;
  report(tcgetattr(*ifildes, &attributes), ierror);
  if (*ierror == 0)
    fill(record, attributes);
}

// CALL PXFTCSETATTR(IFILDES, IOPTACT, JTERMIOS, IERROR)
void pxftcsetattr_(const int32_t *ifildes, const int32_t *ioptact, const int32_t *jtermios, int32_t *ierror) {
  const TermiosRecord *record = find_termios(*jtermios, ierror);
  if (record == nullptr)
    return;
  const termios attributes = host_attributes(*record);
  report(tcsetattr(*ifildes, *ioptact, &attributes), ierror);
}

// CALL PXFCFGETOSPEED(JTERMIOS, IOSPEED, IERROR)
void pxfcfgetospeed_(const int32_t *jtermios, int32_t *iospeed, int32_t *ierror) {
  get_speed(cfgetospeed, *jtermios, iospeed, ierror);
}

// CALL PXFCFGETISPEED(JTERMIOS, IISPEED, IERROR)
void pxfcfgetispeed_(const int32_t *jtermios, int32_t *iispeed, int32_t *ierror) {
  get_speed(cfgetispeed, *jtermios, iispeed, ierror);
}

// CALL PXFCFSETOSPEED(JTERMIOS, ISPEED, IERROR)
void pxfcfsetospeed_(const int32_t *jtermios, const int32_t *ispeed, int32_t *ierror) {
  set_speed(cfsetospeed, *jtermios, *ispeed, ierror);
}

// CALL PXFCFSETISPEED(JTERMIOS, ISPEED, IERROR)
void pxfcfsetispeed_(const int32_t *jtermios, const int32_t *ispeed, int32_t *ierror) {
  set_speed(cfsetispeed, *jtermios, *ispeed, ierror);
}

// CALL PXFTCSENDBREAK(IFILDES, IDURATION, IERROR)
void pxftcsendbreak_(const int32_t *ifildes, const int32_t *iduration, int32_t *ierror) {
  report(tcsendbreak(*ifildes, *iduration), ierror);
}

// CALL PXFTCDRAIN(IFILDES, IERROR)
void pxftcdrain_(const int32_t *ifildes, int32_t *ierror) {
  report(tcdrain(*ifildes), ierror);
}

// CALL PXFTCFLUSH(IFILDES, IQUEUE, IERROR)
void pxftcflush_(const int32_t *ifildes, const int32_t *iqueue, int32_t *ierror) {
  report(tcflush(*ifildes, *iqueue), ierror);
}

// CALL PXFTCFLOW(IFILDES, IACTION, IERROR)
void pxftcflow_(const int32_t *ifildes, const int32_t *iaction, int32_t *ierror) {
  report(tcflow(*ifildes, *iaction), ierror);
}

// CALL PXFTCGETPGRP(IFILDES, IPGID, IERROR)
void pxftcgetpgrp_(const int32_t *ifildes, int32_t *ipgid, int32_t *ierror) {
  *ipgid = tcgetpgrp(*ifildes);
  report(*ipgid, ierror);
}

// CALL PXFTCSETPGRP(IFILDES, IPGID, IERROR)
void pxftcsetpgrp_(const int32_t *ifildes, const int32_t *ipgid, int32_t *ierror) {
  report(tcsetpgrp(*ifildes, *ipgid), ierror);
}
