#!/usr/bin/env python3
"""A double of the weather service on this machine: answers as the real one does, and fails as it is told.

In a test:

    service = WeatherService(temperature=18.4, symbol="partlycloudy_day")
    self.addCleanup(service.close)
    set_own_defaults(home, WeatherServiceURL=service.url)    # quillo.py
    service.mode = "500"
    service.requests                                         # what was asked: path, latitude, longitude, headers, status

By itself it prints the URL for the setting WeatherServiceURL, then serves until it is ended. Its control paths:
/control?mode=429&temperature=-3 changes it, /requests gives what was asked as JSON.
"""

import argparse
import json
import threading
from datetime import datetime, timedelta, timezone
from email.utils import format_datetime, parsedate_to_datetime
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, urlsplit

BASE = "/weatherapi/locationforecast/2.0"
# ok and deprecated give a forecast, hang gives nothing, the numbers are refusals, large is more than any forecast.
MODES = ("ok", "deprecated", "403", "429", "500", "redirect", "garbage", "half", "large", "hang")


def at_hour(moment):
    return moment.replace(minute=0, second=0, microsecond=0)


class WeatherService:
    """Serves until it is closed. Everything below may be changed at any time, from any thread."""

    def __init__(self, mode="ok", temperature=18.4, symbol="partlycloudy_day", port=0):
        self.mode = mode
        self.temperature = temperature  # degrees Celsius, the same at every hour
        self.symbol = symbol
        self.valid_minutes = 30
        self.retry_after = "120"
        self.requests = []
        self.modified = datetime.now(timezone.utc).replace(microsecond=0)
        self._closing = threading.Event()
        service = self

        class Handler(BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                service._answer(self)

            def log_message(self, *_):
                pass

        self._server = ThreadingHTTPServer(("127.0.0.1", port), Handler)
        self._server.daemon_threads = True
        self._thread = threading.Thread(target=self._server.serve_forever, daemon=True)
        self._thread.start()

    @property
    def url(self):
        return f"http://127.0.0.1:{self._server.server_address[1]}{BASE}"

    def close(self):
        self._closing.set()
        self._server.shutdown()
        self._server.server_close()

    def wait(self):
        self._thread.join()

    def forecast(self):
        first = at_hour(datetime.now(timezone.utc))
        hours = [0, *range(1, 55), *range(60, 216, 6)]
        return {
            "type": "Feature",
            "geometry": {"type": "Point", "coordinates": [10.75, 59.91, 3]},
            "properties": {
                "meta": {"updated_at": self._iso(self.modified), "units": {"air_temperature": "celsius"}},
                "timeseries": [self._time(first + timedelta(hours=hour), hour) for hour in hours],
            },
        }

    def _time(self, moment, hour):
        summary = {"summary": {"symbol_code": self.symbol}}
        periods = {"next_12_hours": {**summary, "details": {}}, "next_6_hours": {**summary, "details": {}}}
        if hour < 55:
            periods["next_1_hours"] = {**summary, "details": {"precipitation_amount": 0.0}}
        details = {"air_temperature": self.temperature, "cloud_area_fraction": 50.0, "wind_speed": 3.1}
        return {"time": self._iso(moment), "data": {"instant": {"details": details}, **periods}}

    @staticmethod
    def _iso(moment):
        return moment.strftime("%Y-%m-%dT%H:%M:%SZ")

    def _answer(self, handler):
        url = urlsplit(handler.path)
        query = {key: values[-1] for key, values in parse_qs(url.query).items()}
        if url.path == "/control":
            return self._send(handler, 200, self._control(query))
        if url.path == "/requests":
            return self._send(handler, 200, json.dumps(self.requests).encode())
        request = {"path": handler.path, "latitude": query.get("lat"), "longitude": query.get("lon"),
                   "headers": {key.lower(): value for key, value in handler.headers.items()}, "status": None}
        self.requests.append(request)
        if self.mode == "hang":
            self._closing.wait()
            return None
        request["status"], headers, body = self._outcome(url.path, query, request["headers"])
        return self._send(handler, request["status"], body, headers)

    def _control(self, query):
        if query.get("mode", "ok") not in MODES:
            return f"unknown mode; one of: {' '.join(MODES)}\n".encode()
        self.mode = query.get("mode", self.mode)
        self.symbol = query.get("symbol", self.symbol)
        self.temperature = float(query.get("temperature", self.temperature))
        return b"changed\n"

    def _outcome(self, path, query, headers):
        """Status, headers and body."""
        # The service's own rules come first.
        places = (query.get("lat", ""), query.get("lon", ""))
        if not headers.get("user-agent") or any(len(place.partition(".")[2]) > 4 for place in places):
            return 403, {}, b"<html>Forbidden</html>"
        if path != f"{BASE}/compact":
            return 404, {}, b"<html>Not found</html>"
        if self.mode in ("403", "500"):
            return int(self.mode), {}, b"<html>No</html>"
        if self.mode == "429":
            return 429, {"Retry-After": self.retry_after}, b""
        if self.mode == "redirect":
            return 302, {"Location": f"{self.url}/elsewhere"}, b""
        if self.mode == "garbage":
            return 200, {}, b"\x00\xff{\"properties\":[" * 100
        if self.mode == "large":
            return 200, {}, json.dumps(self.forecast()).encode() + b" " * 2**21

        expires = datetime.now(timezone.utc) + timedelta(minutes=self.valid_minutes)
        fresh = {"Expires": format_datetime(expires, usegmt=True), "Last-Modified": format_datetime(self.modified, usegmt=True)}
        since = headers.get("if-modified-since")
        if since and parsedate_to_datetime(since) >= self.modified:
            return 304, fresh, b""
        body = json.dumps(self.forecast()).encode()
        return (203 if self.mode == "deprecated" else 200), fresh, body[:1000] if self.mode == "half" else body

    @staticmethod
    def _send(handler, status, body, headers=None):
        handler.send_response(status)
        for key, value in {"Content-Type": "application/json", **(headers or {})}.items():
            handler.send_header(key, value)
        if status != 304:
            handler.send_header("Content-Length", str(len(body)))
        try:
            handler.end_headers()
            handler.wfile.write(body)
        except ConnectionError:
            pass  # whoever asked has had enough


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--port", type=int, default=0, help="any free one by default")
    parser.add_argument("--mode", choices=MODES, default="ok")
    parser.add_argument("--temperature", type=float, default=18.4, help="degrees Celsius")
    parser.add_argument("--symbol", default="partlycloudy_day")
    options = parser.parse_args()
    service = WeatherService(options.mode, options.temperature, options.symbol, options.port)
    print(service.url, flush=True)
    try:
        service.wait()
    except KeyboardInterrupt:
        service.close()


if __name__ == "__main__":
    main()
