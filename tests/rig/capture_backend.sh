#!/bin/sh
# A backend that keeps what it is given: capture:FOLDER. CUPS starts it as
# capture JOB USER TITLE COPIES OPTIONS [FILE]; without a file the copies have been made before it.
[ $# -eq 0 ] && exit 0
folder=${DEVICE_URI#capture:}
code=0
[ -f "$folder/behaviour" ] && . "$folder/behaviour"
copies=1
[ $# -gt 5 ] && copies=$4
while [ "$copies" -gt 0 ]; do
    if [ $# -gt 5 ]; then cat "$6"; else cat; fi
    copies=$((copies - 1))
done >"$folder/$1.part" || exit 1
[ "$code" -eq 0 ] || exit "$code"
printf '%s' "$3" >"$folder/$1.title"
mv "$folder/$1.part" "$folder/$1.data"
