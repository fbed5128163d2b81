# QXPORT_BUILD_DATE, the date of the identity text: that of SOURCE_DATE_EPOCH, which TIMESTAMP honours, or the day of the
# configuration. The day is right-aligned in two places.
string(TIMESTAMP date_words "%b;%d;%Y" UTC)
list(GET date_words 1 day)
string(REGEX REPLACE "^0" " " day "${day}")
list(GET date_words 0 month)
list(GET date_words 2 year)
set(QXPORT_BUILD_DATE "${month} ${day} ${year}")
