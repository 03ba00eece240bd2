# The parts of a private desktop of the kind x11: X server, window manager, tray. Read by "desktop", whose variables and
# functions it uses.

need_session() {
  [ "$scale" != 1.5 ] || die "--scale takes 1 or 2 under X11"
  need Xvfb xvfb
  need setxkbmap x11-xkb-utils
  need xprop x11-utils
  need xrdb x11-xserver-utils
  need openbox openbox
  [ $tray = none ] || need $tray $tray
  [ $compositor = no ] || need picom picom
}

start_display() {
  # -noreset: without it the server forgets its keyboard map when its last client leaves.
  start Xvfb Xvfb -displayfd 3 -screen 0 "${width}x${height}x24" -nolisten tcp -noreset 3>"$D/display"
  until_ok Xvfb test -s "$D/display"
  DISPLAY=:$(cat "$D/display")
  export DISPLAY
  setxkbmap us || die "the keyboard map could not be set"
  # What desktops with a fine screen set; Qt takes its scale from it.
  echo "Xft.dpi: $((96 * scale))" | xrdb -nocpp -merge || die "the resolution could not be set"
}

start_panel() {
  mkdir -p "$HOME/.config/openbox"
  # One virtual desktop: with several, a turn of the mouse wheel on the background switches and "loses" every window.
  sed 's#<number>4</number>#<number>1</number>#' /etc/xdg/openbox/rc.xml >"$HOME/.config/openbox/rc.xml"
  start openbox openbox
  until_ok openbox sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "#"'

  if [ $compositor = yes ]; then
    start picom picom --backend xrender --config /dev/null
  fi

  bar=$((28 * scale)) icon=$((22 * scale)) gap=$((2 * scale))
  case $edge in
    top) position="top center horizontal" area="0, $bar, " ;;
    bottom) position="bottom center horizontal" area="0, 0, $width, $((height - bar))" ;;
    left) position="center left vertical" area="$bar, 0, " ;;
    right) position="center right vertical" area="0, 0, $((width - bar))" ;;
  esac
  [ $panel = dark ] && colour=202020 || colour=f0f0f0
  case $tray in
    tint2)
      cat >"$D/tint2rc" <<EOF
panel_items = $items
panel_position = $position
panel_size = 100% $bar
panel_layer = top
strut_policy = follow_size
wm_menu = 0
systray_padding = $((2 * gap)) $gap $((2 * gap))
systray_icon_size = $icon
rounded = 0
background_color = #$colour 100
panel_background_id = 1
EOF
      command="tint2 -c '$D/tint2rc'" ;;
    trayer)
      command="trayer --edge $edge --align right --widthtype request --heighttype pixel --height $bar --iconspacing $gap \
        --SetDockType true --SetPartialStrut true --expand true --transparent true --alpha 0 --tint 0x$colour" ;;
  esac
  if [ $tray != none ]; then
    printf '#!/bin/sh\necho $$ >"%s"\nexec %s\n' "$D/tray.pid" "$command" >"$D/tray"
    chmod +x "$D/tray"
    # The bar has its place on the screen: the tray is up. Rarely the window manager does not grant the place on a busy
    # machine, and a bar that is started anew gets it.
    for attempt in 1 2 3; do
      start tray "$D/tray"
      for ((i = 0; i < 240; i++)); do
        xprop -root _NET_WORKAREA 2>/dev/null | grep -q "= $area" && break 2
        kill -0 "${daemons[-1]}" 2>/dev/null || break
        sleep 0.025
      done
      [ $attempt -lt 3 ] || die "tray did not start: $(tail -n 1 "$logs/tray.log")"
      kill "${daemons[-1]}" 2>/dev/null
      unset 'daemons[-1]'
    done
  fi
}
