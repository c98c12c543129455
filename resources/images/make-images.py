#!/usr/bin/env python3
"""Draws the library's pictures and writes them as PNG files beside this script.

Run it again after changing a drawing: python3 make-images.py
Only the standard library is used, and the output is byte-for-byte repeatable.

Pictures are drawn in a unit square (0..1, y downwards) and rendered with 4x4
supersampling, so one drawing serves every size.
"""

import math
import os
import struct
import zlib

SAMPLES = 4

# Palette, RGBA 0..255.
INK = (52, 62, 80, 255)
PAPER = (250, 251, 253, 255)
RULE = (150, 162, 182, 255)
BLUE = (38, 110, 200, 255)
BLUE_DARK = (22, 74, 150, 255)
BLUE_LIGHT = (190, 216, 245, 255)
AMBER = (236, 170, 40, 255)
AMBER_DARK = (170, 112, 20, 255)
RED = (210, 45, 45, 255)
WHITE = (255, 255, 255, 255)
GREEN = (46, 150, 90, 255)


# --- shapes: each is a function (x, y) -> inside? -------------------------------------------

def rect(x0, y0, x1, y1):
    return lambda x, y: x0 <= x <= x1 and y0 <= y <= y1


def rounded_rect(x0, y0, x1, y1, r):
    def inside(x, y):
        if not (x0 <= x <= x1 and y0 <= y <= y1):
            return False
        cx = min(max(x, x0 + r), x1 - r)
        cy = min(max(y, y0 + r), y1 - r)
        return (x - cx) ** 2 + (y - cy) ** 2 <= r * r
    return inside


def circle(cx, cy, r):
    return lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= r * r


def ring(cx, cy, r, width):
    inner = r - width
    return lambda x, y: inner * inner <= (x - cx) ** 2 + (y - cy) ** 2 <= r * r


def segment(x0, y0, x1, y1, width):
    dx, dy = x1 - x0, y1 - y0
    length2 = dx * dx + dy * dy
    half = width / 2

    def inside(x, y):
        t = 0.0 if length2 == 0 else max(0.0, min(1.0, ((x - x0) * dx + (y - y0) * dy) / length2))
        px, py = x0 + t * dx, y0 + t * dy
        return (x - px) ** 2 + (y - py) ** 2 <= half * half
    return inside


def polygon(points):
    def inside(x, y):
        result = False
        j = len(points) - 1
        for i, (xi, yi) in enumerate(points):
            xj, yj = points[j]
            if (yi > y) != (yj > y) and x < (xj - xi) * (y - yi) / (yj - yi) + xi:
                result = not result
            j = i
        return result
    return inside


# --- canvas ---------------------------------------------------------------------------------

class Canvas:
    def __init__(self, size):
        self.size = size
        self.pixels = [[(0.0, 0.0, 0.0, 0.0) for _ in range(size)] for _ in range(size)]

    def px(self, pixels):
        """A length of `pixels` device pixels, in unit coordinates."""
        return pixels / self.size

    def fill(self, shape, color):
        n = self.size
        cr, cg, cb, ca = (c / 255 for c in color)
        for j in range(n):
            for i in range(n):
                hits = 0
                for sj in range(SAMPLES):
                    for si in range(SAMPLES):
                        if shape((i + (si + 0.5) / SAMPLES) / n, (j + (sj + 0.5) / SAMPLES) / n):
                            hits += 1
                if not hits:
                    continue
                a = ca * hits / (SAMPLES * SAMPLES)
                r0, g0, b0, a0 = self.pixels[j][i]
                out = a + a0 * (1 - a)
                mix = lambda src, dst: (src * a + dst * a0 * (1 - a)) / out
                self.pixels[j][i] = (mix(cr, r0), mix(cg, g0), mix(cb, b0), out)

    def png(self):
        raw = bytearray()
        for row in self.pixels:
            raw.append(0)  # filter type None
            for r, g, b, a in row:
                raw += bytes(round(max(0.0, min(1.0, c)) * 255) for c in (r, g, b, a))

        def chunk(kind, data):
            body = kind + data
            return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

        header = struct.pack(">IIBBBBB", self.size, self.size, 8, 6, 0, 0, 0)  # 8-bit RGBA
        return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
                + chunk(b"IDAT", zlib.compress(bytes(raw), 9)) + chunk(b"IEND", b""))


# --- drawings -------------------------------------------------------------------------------

def draw_sheet(c, x0=0.16, y0=0.06, x1=0.76, y1=0.94):
    """A ruled sheet: the record whose search data is edited or viewed."""
    c.fill(rounded_rect(x0, y0, x1, y1, c.px(1.5)), INK)
    line = c.px(1)
    c.fill(rect(x0 + line, y0 + line, x1 - line, y1 - line), PAPER)
    rows = 4 if c.size >= 32 else 3
    for k in range(rows):
        y = y0 + (y1 - y0) * (k + 1.2) / (rows + 1)
        c.fill(segment(x0 + 0.1, y, x1 - 0.12, y, max(c.px(1), 0.05)), RULE)


def draw_pencil(c):
    """A pencil laid across the sheet, point down-left."""
    w = 0.19
    ax, ay, bx, by = 0.36, 0.80, 0.92, 0.24  # tip end, eraser end
    ux, uy = (bx - ax), (by - ay)
    length = math.hypot(ux, uy)
    ux, uy = ux / length, uy / length
    nx, ny = -uy * w / 2, ux * w / 2
    tip = (ax - ux * 0.16, ay - uy * 0.16)
    body = [(ax + nx, ay + ny), (bx + nx, by + ny), (bx - nx, by - ny), (ax - nx, ay - ny)]
    c.fill(polygon(body), AMBER_DARK)
    inset = c.px(1)
    inner = [(ax + nx * 0.55, ay + ny * 0.55), (bx - ux * inset + nx * 0.55, by - uy * inset + ny * 0.55),
             (bx - ux * inset - nx * 0.55, by - uy * inset - ny * 0.55), (ax - nx * 0.55, ay - ny * 0.55)]
    c.fill(polygon(inner), AMBER)
    c.fill(polygon([(ax + nx, ay + ny), tip, (ax - nx, ay - ny)]), (236, 210, 160, 255))
    c.fill(polygon([(tip[0] + ux * 0.06 + nx * 0.35, tip[1] + uy * 0.06 + ny * 0.35), tip,
                    (tip[0] + ux * 0.06 - nx * 0.35, tip[1] + uy * 0.06 - ny * 0.35)]), INK)
    end = 0.11
    c.fill(polygon([(bx + nx, by + ny), (bx + ux * end + nx, by + uy * end + ny),
                    (bx + ux * end - nx, by + uy * end - ny), (bx - nx, by - ny)]), RED)


def funnel_points(top=0.10, bottom=0.90, left=0.08, right=0.92, neck=0.17, waist=0.50):
    mid = (left + right) / 2
    return [(left, top), (right, top), (mid + neck / 2, waist), (mid + neck / 2, bottom),
            (mid - neck / 2, bottom), (mid - neck / 2, waist)]


def draw_funnel(c, shift=0.0, scale=1.0):
    pts = [(x * scale + shift, y * scale) for x, y in funnel_points()]
    c.fill(polygon(pts), BLUE_DARK)
    # The lighter inside keeps a dark edge of about one pixel at every size.
    edge = c.px(1.2)
    cx = sum(x for x, _ in pts) / len(pts)
    cy = sum(y for _, y in pts) / len(pts)
    inner = []
    for x, y in pts:
        dx, dy = cx - x, cy - y
        d = math.hypot(dx, dy)
        inner.append((x + dx / d * edge * 1.6, y + dy / d * edge * 1.6))
    c.fill(polygon(inner), BLUE)
    band = (pts[0][1] + c.px(1.5), pts[0][1] + max(c.px(2.5), 0.1))
    c.fill(polygon([(pts[0][0] + 0.07 * scale, band[0]), (pts[1][0] - 0.07 * scale, band[0]),
                    (pts[1][0] - 0.1 * scale, band[1]), (pts[0][0] + 0.1 * scale, band[1])]), BLUE_LIGHT)


def draw_cross(c, cx, cy, arm):
    """A red cross with a white halo, so that it reads on top of the funnel at any size."""
    width = max(c.px(2), arm * 0.45)
    halo = width + c.px(2)
    for w, color in ((halo, WHITE), (width, RED)):
        c.fill(segment(cx - arm, cy - arm, cx + arm, cy + arm, w), color)
        c.fill(segment(cx - arm, cy + arm, cx + arm, cy - arm, w), color)


def draw_magnifier(c, cx, cy, r, lens_width, handle_width, color=INK, glass=BLUE_LIGHT):
    c.fill(circle(cx, cy, r), glass)
    c.fill(ring(cx, cy, r, lens_width), color)
    d = r / math.sqrt(2)
    c.fill(segment(cx + d, cy + d, cx + d + r * 0.95, cy + d + r * 0.95, handle_width), color)


def edit_data(size):
    c = Canvas(size)
    draw_sheet(c)
    draw_pencil(c)
    return c


def filter_(size):
    c = Canvas(size)
    draw_funnel(c)
    return c


def clear_filter(size):
    c = Canvas(size)
    draw_funnel(c, shift=-0.04, scale=0.9)
    draw_cross(c, 0.72, 0.72, 0.17)
    return c


def about(size):
    """The library's own mark: a ruled sheet under a magnifier on a blue tile."""
    c = Canvas(size)
    c.fill(rounded_rect(0.02, 0.02, 0.98, 0.98, 0.18), BLUE_DARK)
    c.fill(rounded_rect(0.05, 0.05, 0.95, 0.95, 0.15), BLUE)
    c.fill(rounded_rect(0.20, 0.14, 0.66, 0.78, 0.03), PAPER)
    for k in range(4):
        y = 0.28 + k * 0.12
        c.fill(segment(0.28, y, 0.58 - (0.1 if k == 3 else 0), y, 0.04), RULE)
    draw_magnifier(c, 0.62, 0.60, 0.17, 0.06, 0.10, color=INK, glass=(190, 216, 245, 170))
    return c


def base_table_field(size):
    """A small grid with one column marked: a field of the host's own table."""
    c = Canvas(size)
    x0, y0, x1, y1 = c.px(1), c.px(2), 1 - c.px(1), 1 - c.px(2)
    c.fill(rect(x0, y0, x1, y1), INK)
    c.fill(rect(x0 + c.px(1), y0 + c.px(1), x1 - c.px(1), y1 - c.px(1)), PAPER)
    c.fill(rect(x0 + c.px(1), y0 + c.px(1), x1 - c.px(1), y0 + c.px(4)), RULE)
    col = (x0 + c.px(5), x0 + c.px(9))
    c.fill(rect(col[0], y0 + c.px(4), col[1], y1 - c.px(1)), (120, 200, 150, 255))
    for gx in (x0 + c.px(5), x0 + c.px(9)):
        c.fill(rect(gx, y0, gx + c.px(1), y1), INK)
    for gy in (y0 + c.px(4), y0 + c.px(7), y0 + c.px(10)):
        c.fill(rect(x0, gy, x1, gy + c.px(1)), INK)
    c.fill(rect(col[0] + c.px(1), y0 + c.px(1), col[1], y0 + c.px(4)), GREEN)
    return c


def search_column(size):
    """A magnifier: one of the library's own search columns."""
    c = Canvas(size)
    draw_magnifier(c, 0.40, 0.40, 0.30, c.px(2), c.px(3), color=BLUE_DARK)
    return c


PICTURES = {
    201: (edit_data, 32), 202: (filter_, 32), 203: (clear_filter, 32),
    301: (edit_data, 16), 302: (filter_, 16), 303: (clear_filter, 16),
    401: (about, 48),
    501: (base_table_field, 16), 502: (search_column, 16),
}


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    for number, (draw, size) in sorted(PICTURES.items()):
        with open(os.path.join(here, f"{number}.png"), "wb") as out:
            out.write(draw(size).png())


if __name__ == "__main__":
    main()
