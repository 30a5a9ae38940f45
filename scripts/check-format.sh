#!/usr/bin/env bash
# Fails when a tracked C++ file differs from what clang-format makes of it with the checked-in
# .clang-format, and names the files. Run scripts/check-format.sh --fix to format them.
set -euo pipefail
cd "$(dirname "$0")/.."
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  mapfile -t files < <(git ls-files '*.cc' '*.h' '*.c')
else
  mapfile -t files < <(find . -path ./build -prune -o -type f \( -name '*.cc' -o -name '*.h' -o -name '*.c' \) -print)
fi
if [ "${1:-}" = "--fix" ]; then
  clang-format -i "${files[@]}"
  exit 0
fi
unformatted=()
for file in "${files[@]}"; do
  if ! clang-format --dry-run --Werror "$file" >/dev/null 2>&1; then
    unformatted+=("$file")
  fi
done
if [ "${#unformatted[@]}" -gt 0 ]; then
  echo "not formatted (scripts/check-format.sh --fix): ${unformatted[*]}" >&2
  exit 1
fi
echo "format: ${#files[@]} files clean"
