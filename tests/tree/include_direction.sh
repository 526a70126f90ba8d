#!/usr/bin/env bash
# Includes run one way: a folder of src/ includes itself, folders behind it in
# the list below, the public headers, and the texts that the build embeds. The
# reader of recordings shares src/format with the recorder, and no more.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../src"

folders=(api recorders writers session output format diagnostics platform)
declare -A rank
for i in "${!folders[@]}"; do rank[${folders[$i]}]=$i; done

status=0
for folder in */; do
  folder=${folder%/}
  if [ -z "${rank[$folder]:-}" ]; then
    echo "src/$folder has no place in the order of folders"
    status=1
    continue
  fi
  while IFS=: read -r file line text; do
    target=$(sed -E 's|.*"(\.\./)?([a-z]+)/.*|\2|' <<<"$text")
    [ "$target" != embedded ] || continue
    if [ "${rank[$target]:--1}" -lt "${rank[$folder]}" ]; then
      echo "src/$file:$line: $folder must not include $target"
      status=1
    fi
  done < <(grep -rnE '# *include +"(\.\./)?[a-z]+/' "$folder" || true)
  if [ "$folder" != platform ] && grep -rnE '^ *# *if' "$folder"; then
    echo "conditional code belongs into src/platform"
    status=1
  fi
done
cd ..
if grep -nE '# *include +"(api|recorders|writers|session|output|diagnostics|platform)/' \
  -r recording tools; then
  echo "the reader and the tools take nothing of the recorder but src/format"
  status=1
fi
if grep -nE '# *include +"recording/' -r src; then
  echo "the recorder does not know the reader"
  status=1
fi
if grep -nE '^ *# *if' -r recording tools --include='*.h' --include='*.cpp'; then
  echo "conditional code belongs into a file for each system"
  status=1
fi
exit $status
