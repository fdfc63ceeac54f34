# Sourced by ./run: what it opens.

# run_mode ARGUMENT...: "window" where there is a display, with the clips named; "runner" without one, and when an argument
# is an option, since options belong to the headless runner.
run_mode() {
  local argument
  for argument in "$@"; do
    [[ $argument == -* ]] && { echo runner; return; }
  done
  if [ -n "${WAYLAND_DISPLAY:-}${DISPLAY:-}" ]; then echo window; else echo runner; fi
}
