#!/usr/bin/env python3
"""A double of the weather service on this machine: answers as the real one does.

In a test:

    service = WeatherService(temperature=18.4, symbol="partlycloudy_day")
    self.addCleanup(service.close)
    set_own_defaults(home, WeatherServiceURL=service.url)    # quillo.py
    service.requests                                         # what was asked: pairs of latitude and longitude

By itself it prints the URL for the setting WeatherServiceURL, then serves until it is ended.
"""

import argparse
import json
import signal
import threading
from datetime import datetime, timedelta, timezone
from email.utils import format_datetime
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, urlsplit

BASE = "/weatherapi/locationforecast/2.0"
# The forecast stays the same.
MODIFIED = "Wed, 25 Nov 2026 11:45:07 GMT"
# After which an answer may be asked for anew.
LIFETIME = timedelta(minutes=30)


class WeatherService:
    """Serves until it is closed. What it tells may be changed at any time, from any thread."""

    def __init__(self, temperature=18.4, symbol="partlycloudy_day"):
        self.temperature = temperature  # degrees Celsius, the same at every hour
        self.symbol = symbol
        self.requests = []
        service = self

        class Handler(BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                service._answer(self)

            def log_message(self, *_):
                pass

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    @property
    def url(self):
        return f"http://127.0.0.1:{self._server.server_address[1]}{BASE}"

    def close(self):
        self._server.shutdown()
        self._server.server_close()

    def forecast(self):
        first = datetime.now(timezone.utc).replace(minute=0, second=0, microsecond=0)
        hours = [0, *range(1, 55), *range(60, 216, 6)]
        return {
            "type": "Feature",
            "geometry": {"type": "Point", "coordinates": [10.75, 59.91, 3]},
            "properties": {
                "meta": {"units": {"air_temperature": "celsius"}},
                "timeseries": [self._time(first + timedelta(hours=hour), hour) for hour in hours],
            },
        }

    def _time(self, moment, hour):
        summary = {"summary": {"symbol_code": self.symbol}}
        periods = {"next_12_hours": {**summary, "details": {}}, "next_6_hours": {**summary, "details": {}}}
        if hour < 55:
            periods["next_1_hours"] = {**summary, "details": {"precipitation_amount": 0.0}}
        details = {"air_temperature": self.temperature, "cloud_area_fraction": 50.0, "wind_speed": 3.1}
        return {"time": moment.strftime("%Y-%m-%dT%H:%M:%SZ"), "data": {"instant": {"details": details}, **periods}}

    def _answer(self, handler):
        url = urlsplit(handler.path)
        query = {key: values[-1] for key, values in parse_qs(url.query).items()}
        places = query.get("lat", ""), query.get("lon", "")
        self.requests.append(places)
        # The service's own rules come first.
        if not handler.headers.get("User-Agent") or any(len(place.partition(".")[2]) > 4 for place in places):
            status, headers, body = 403, {}, b"<html>Forbidden</html>"
        elif url.path != f"{BASE}/compact":
            status, headers, body = 404, {}, b"<html>Not found</html>"
        else:
            status, headers, body = self._outcome(handler.headers.get("If-Modified-Since"))
        handler.send_response(status)
        for key, value in {"Content-Type": "application/json", "Content-Length": str(len(body)), **headers}.items():
            handler.send_header(key, value)
        try:
            handler.end_headers()
            handler.wfile.write(body)
        except ConnectionError:
            pass  # whoever asked has had enough

    def _outcome(self, condition):
        """Status, headers and body."""
        expires = datetime.now(timezone.utc) + LIFETIME
        headers = {"Expires": format_datetime(expires, usegmt=True), "Last-Modified": MODIFIED}
        return (304, headers, b"") if condition == MODIFIED else (200, headers, json.dumps(self.forecast()).encode())


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--temperature", type=float, default=18.4, help="degrees Celsius")
    parser.add_argument("--symbol", default="partlycloudy_day")
    options = parser.parse_args()
    service = WeatherService(options.temperature, options.symbol)
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    print(service.url, flush=True)
    signal.pause()


if __name__ == "__main__":
    main()
