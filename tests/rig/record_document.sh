#!/bin/sh
# What the network printer starts for a document: keeps the values that it is printed with.
number=$(($(ls "$RECORD_FOLDER" | grep -c '\.values$') + 1))
env | grep '^IPP_' | sort >"$RECORD_FOLDER/$number.part"
cp "$1" "$RECORD_FOLDER/$number.document"
mv "$RECORD_FOLDER/$number.part" "$RECORD_FOLDER/$number.values"
