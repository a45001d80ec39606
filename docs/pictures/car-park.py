#!/usr/bin/env python3
"""Draws car-park.svg, the picture that the console's manual draws zones on: what a camera on a mast might see.

    ./car-park.py >car-park.svg
    chromium --headless --no-sandbox --hide-scrollbars --window-size=1280,960 --screenshot=car-park.png car-park.svg
"""

WIDTH, HEIGHT, HORIZON = 1280, 960, 300


def spot(across, depth):
    """Where a spot of the ground is in the picture: across from -1 to 1, depth 0 far away, 1 below the camera."""
    scale = 0.16 + 0.84 * depth ** 1.7
    return WIDTH / 2 + across * WIDTH * 0.75 * scale, HORIZON + (HEIGHT - HORIZON) * depth ** 1.7


def ground(points, style):
    print(f'<polygon points="{" ".join(f"{x:.0f},{y:.0f}" for x, y in (spot(*p) for p in points))}" {style}/>')


def car(across, depth, color):
    x, y = spot(across, depth)
    size = 0.16 + 0.84 * depth ** 1.7
    print(f'<g transform="translate({x:.0f} {y:.0f}) scale({size:.2f})">'
          '<ellipse cx="0" cy="4" rx="150" ry="22" fill="#000" opacity=".28"/>'
          f'<path d="M-140 -8q-6 -62 26 -70l34 -6q30 -58 78 -58t84 58l34 8q30 10 24 68z" fill="{color}"/>'
          '<path d="M-68 -86q26 -42 60 -44v44zM4 -130q40 2 66 44h-66z" fill="#1d2b36"/>'
          '<path d="M-140 -34h280" stroke="#000" stroke-opacity=".25" stroke-width="5"/>'
          '<path d="M-138 -60h22v16h-22z" fill="#fff2c2"/><path d="M118 -60h20v16h-20z" fill="#d8412f"/>'
          '<circle cx="-84" cy="-8" r="25" fill="#16191c"/><circle cx="-84" cy="-8" r="11" fill="#8e979d"/>'
          '<circle cx="86" cy="-8" r="25" fill="#16191c"/><circle cx="86" cy="-8" r="11" fill="#8e979d"/></g>')


def person(across, depth, color):
    x, y = spot(across, depth)
    size = 0.16 + 0.84 * depth ** 1.7
    print(f'<g transform="translate({x:.0f} {y:.0f}) scale({size:.2f})"><ellipse cx="0" cy="2" rx="36" ry="9" opacity=".3"/>'
          f'<path d="M-22 -150q22 -16 44 0l8 66h-14l-2 84h-14l-3 -76l-5 76h-14l-2 -84h-12z" fill="{color}"/>'
          '<circle cx="0" cy="-178" r="20" fill="#c79a78"/></g>')


print(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" width="{WIDTH}" height="{HEIGHT}">')
print('<defs><linearGradient id="sky" x2="0" y2="1"><stop stop-color="#7d98ab"/><stop offset="1" stop-color="#d5d9d3"/></linearGradient>'
      '<linearGradient id="tar" x2="0" y2="1"><stop stop-color="#6f767a"/><stop offset="1" stop-color="#474d51"/></linearGradient></defs>')
print(f'<rect width="{WIDTH}" height="{HORIZON + 20}" fill="url(#sky)"/>')
print(f'<rect y="{HORIZON}" width="{WIDTH}" height="{HEIGHT - HORIZON}" fill="#6c7a58"/>')
for x, height in ((60, 70), (150, 95), (235, 60), (1010, 80), (1100, 110), (1200, 75)):
    print(f'<ellipse cx="{x}" cy="{HORIZON - height / 2}" rx="{height * .7:.0f}" ry="{height * .75:.0f}" fill="#4e6247"/>')
print('<path d="M330 300V150h560v150z" fill="#a99f90"/><path d="M318 150l40 -34h504l40 34z" fill="#6b5d52"/>')
for x in range(370, 860, 82):
    print(f'<rect x="{x}" y="180" width="52" height="42" fill="#2f3f4b"/><path d="M{x} 222l52 -42" stroke="#9fb3c0" stroke-opacity=".35" stroke-width="6"/>')
print('<rect x="590" y="232" width="92" height="68" fill="#3d3732"/>')
ground([(-0.95, 0.02), (0.95, 0.02), (1.25, 1.1), (-1.25, 1.1)], 'fill="url(#tar)"')
ground([(-0.2, 0.02), (0.2, 0.02), (0.2, 1.1), (-0.2, 1.1)], 'fill="#000" opacity=".12"')
for side in (-1, 1):
    for depth in (0.14, 0.3, 0.46, 0.62, 0.78, 0.94):
        ground([(side * 0.28, depth), (side * 0.9, depth), (side * 0.9, depth + 0.012), (side * 0.28, depth + 0.012)], 'fill="#e8e6dc" opacity=".8"')
for depth in (0.1, 0.25, 0.4, 0.55, 0.7, 0.85):
    ground([(-0.012, depth), (0.012, depth), (0.012, depth + 0.06), (-0.012, depth + 0.06)], 'fill="#f0d98a" opacity=".85"')
for across, depth, color in ((-0.58, 0.27, "#8c3b32"), (0.6, 0.28, "#c9cdd0"), (-0.6, 0.44, "#2f5574"), (0.62, 0.6, "#3c6b4f"), (-0.62, 0.75, "#d0b05a")):
    car(across, depth, color)
person(0.06, 0.36, "#2d3b66")
person(0.4, 0.83, "#7a3550")
print('<path d="M96 960V250" stroke="#3b4246" stroke-width="16"/><path d="M96 258h120" stroke="#3b4246" stroke-width="10"/><path d="M196 252h48l-8 16h-40z" fill="#f3e6b3"/>')
print('</svg>')
