# The parts of a private desktop of the kinds wayland and xwayland: sway on an output without a screen, and waybar. Read by
# "desktop", whose variables and functions it uses.

need_session() {
  need sway sway
  need swaymsg sway
  need waybar waybar
  need grim grim
  need foot foot
  [ $session = wayland ] || { need Xwayland xwayland; need xhost x11-xserver-utils; }
}

# sway does not run as root: it runs as nobody then, in a directory that is its own. Everything else stays as it is.
start_display() {
  local own=$D/sway as=() xwayland=disable open=true
  mkdir -m 700 "$own"
  if [ "$(id -u)" = 0 ]; then
    chmod 711 "$D"
    chown nobody:nogroup "$own"
    as=(setpriv --reuid=nobody --regid=nogroup --clear-groups --pdeathsig TERM)
  fi
  # The X server lets only the account in that it runs as.
  [ $session = wayland ] || { xwayland=enable; open="xhost +si:localuser:$(id -un)"; }
  cat >"$D/sway.conf" <<EOF
xwayland $xwayland
output HEADLESS-1 resolution ${width}x$height scale $scale
default_border pixel 1
exec $open >/dev/null 2>&1 && env >$own/environment.new && mv $own/environment.new $own/environment
EOF
  start sway "${as[@]}" env -i PATH="$PATH" QUILLO_DESKTOP="$D" HOME="$own" XDG_RUNTIME_DIR="$own" LC_ALL=C.UTF-8 \
    WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman WLR_HEADLESS_OUTPUTS=1 sway -c "$D/sway.conf"
  until_ok sway test -s "$own/environment"
  SWAYSOCK=$(sed -n 's/^SWAYSOCK=//p' "$own/environment")
  WAYLAND_DISPLAY=$own/$(sed -n 's/^WAYLAND_DISPLAY=//p' "$own/environment")
  export SWAYSOCK WAYLAND_DISPLAY
  if [ $session = xwayland ]; then
    DISPLAY=$(sed -n 's/^DISPLAY=//p' "$own/environment")
    export DISPLAY
  fi
}

start_panel() {
  cat >"$D/waybar.json" <<EOF
{"layer": "top", "position": "top", "height": 30, "modules-right": ["tray"], "tray": {"icon-size": 20, "spacing": 6}}
EOF
  printf '#!/bin/sh\necho $$ >"%s"\nexec waybar -c "%s" -s /dev/null\n' "$D/tray.pid" "$D/waybar.json" >"$D/tray"
  chmod +x "$D/tray"
  start tray "$D/tray"
  [ $bus = no ] || until_ok tray sh -c "gdbus call --session -d org.kde.StatusNotifierWatcher -o /StatusNotifierWatcher \
    -m org.freedesktop.DBus.Properties.Get org.kde.StatusNotifierWatcher IsStatusNotifierHostRegistered | grep -q true"
}
