#!/bin/sh
# Records the sessions of this folder with teskread and its simulated scanners:
#
#   tests/sessions/record.sh build/linux/teskread [NAME...]
#
# Without names all are recorded. Each session is three files: NAME.trace, NAME.ndjson with the sheets that
# were read, and NAME.messages where the operator got any.
set -eu

teskread=$1
shift
names=" $* "
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
simulator=
trap 'test -z "$simulator" || kill "$simulator"; rm -rf "$work"' EXIT

# session NAME READER STATUS "WHAT IT SHOWS" "OPTIONS OF simulate" OPTIONS OF scan...
# STATUS is what the scan is to end with.
session() {
  name=$1 reader=$2 status=$3 shows=$4 scanner=$5
  shift 5
  if test "$names" != "  " && test "${names#* "$name" }" = "$names"; then return; fi

  rm -f "$work/listening"
  # The options of simulate hold no blanks of their own.
  # shellcheck disable=SC2086
  "$teskread" simulate --reader "$reader" --link "$work/scanner" $scanner >"$work/listening" 2>"$work/complaints" &
  simulator=$!
  until grep -qs listening "$work/listening"; do sleep 0.1; done

  rm -f "$here/$name.ndjson"
  got=0
  timeout 30 "$teskread" scan --reader "$reader" --port "$work/scanner" --format ndjson --trace "$work/trace" \
    --output "$here/$name.ndjson" "$@" 2>"$work/messages" || got=$?
  kill "$simulator"
  wait "$simulator" || true
  simulator=
  if test "$got" != "$status" || test -s "$work/complaints"; then
    echo "$name: status $got instead of $status" >&2
    cat "$work/messages" "$work/complaints" >&2
    exit 1
  fi

  rm -f "$here/$name.messages"
  # The block at the end says how fast it went.
  sed '/^teskread scan: /,$d' "$work/messages" >"$work/told"
  if test -s "$work/told"; then cp "$work/told" "$here/$name.messages"; fi
  {
    sed -n 's/^reader [0-9]* /# model: /p' "$work/trace"
    echo "# from: simulated (teskread simulate $scanner)" | sed "s|$here/||"
    echo "# shows: $shows"
    cat "$work/trace"
  } >"$here/$name.trace"
  echo "$name"
}

session scanmark-page 13 0 "a batch of two one-sided sheets, until the hopper is empty" \
  "--count 2 --side1 8x48" --side1 8x48
session scanmark-duplex 15 0 "both sides of two sheets in one pass" \
  "--count 2 --side1 8x48 --side2 8x48" --side1 8x48 --side2 8x48
session scanmark-windows 15 0 "two read windows on the front and one on the back, with gaps" \
  "--count 2 --side1 16x48 --side2 16x48" --side1 16x48 --side2 16x48 \
  --window 2,4,2,1,5,1,1,0 --window 11,3,1,8,5,2,1,1 --window 3,3,1,9,5,1,2,0
session scanmark-imprint-reject 15 0 "two sheets that are printed on and leave through the reject exit" \
  "--count 2 --side1 8x48" --side1 8x48 --set Duplex=False --imprint "Room 7; late" --imprint-position 4 \
  --dispose reject
session scanmark-jam 15 1 "the second sheet jams before it is read" \
  "--count 3 --side1 8x48 --fault jam@2" --side1 8x48 --set Duplex=False
session scantron8000-page 16 0 "the read threshold and raw mark values of two sheets" \
  "--count 2 --side1 8x48" --side1 8x48
session opscan-page 2 0 "two sheets, front only" \
  "--count 2 --side1 8x48" --set Duplex=False --max-sheets 2
session opscan-duplex-barcodes 2 0 "both sides of two sheets, the first with two barcodes and the second with one" \
  "--sheets $here/opscan-sheets.ndjson" --set Duplex=True --barcode 1,1,30,8,teskBarcodeTypeCode39,1 --max-sheets 2
session opscan-skew 2 1 "the second sheet is skewed" \
  "--count 3 --side1 8x48 --fault skew@2" --set Duplex=False
session sekonic-page 8 0 "two sheets, front only" \
  "--count 2 --side1 8x40" --side1 8x40 --set Duplex=False --max-sheets 2
session sekonic-windows 8 0 "two read windows on the front" \
  "--count 2 --side1 16x40" --side1 16x40 --set Duplex=False --window 2,4,1,1,5,1,1,0 --window 11,3,1,8,5,1,1,0 --max-sheets 2
session sekonic-barcodes 8 0 "sheets with two barcodes and with one" \
  "--sheets $here/sekonic-sheets.ndjson" --side1 8x40 --set Duplex=False --barcode 1,1,30,8,teskBarcodeTypeCode39,1 --max-sheets 2
session sr430-card 38 0 "two cards" \
  "--count 2 --side1 8x40" --side1 8x12 --set Duplex=False --max-sheets 2
session vmr138-sheet 24 0 "two sheets" \
  "--count 2 --side1 8x37" --max-sheets 2
session vmr138-jam 24 1 "the second sheet jams before it is read" \
  "--count 3 --side1 8x37 --fault jam@2"
