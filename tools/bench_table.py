#!/usr/bin/env python3
"""Prints one table from the JSON reports of the benchmark programs: case, ours, best peer, ratio.

    bench_table.py [--all-peers] [--markdown] REPORT...

A benchmark is named <Case>/<variant...>:<who>; what stands in front of the colon pairs `ours` with its peers. What the
benchmark library writes behind <who> is either part of the case (arguments, `threads:2`) or says how time was taken.
The ratio is our time by the peer's: below 1 we are faster. Cases without `ours`, or without a peer, are listed too.
"""
import argparse
import json
import re
import sys

NAME = re.compile(r'(?P<case>(?:[^:]|::)+?):(?!:)(?P<who>(?:[^:/]|::)+)(?P<rest>(?:/.*)?)$')
HOW_MEASURED = re.compile(
    r'/(?:iterations:\d+|repeats:\d+|min_time:[\d.]+s?|min_warmup_time:[\d.]+s?|process_time|real_time|manual_time)(?=/|$)')
# Our own plain definition of the same thing: worth seeing beside the peers, but none of them.
OWN_FORMS = {'plain'}
TIME_UNITS = {'ns': 1.0, 'us': 1e3, 'ms': 1e6, 's': 1e9}


def split_name(name):
    """Gives (case, who, is wall time wanted), or None for a name without a <who>."""
    match = NAME.match(name)
    if not match:
        return None
    rest = match['rest']
    is_wall_time = '/real_time' in rest or '/manual_time' in rest
    return match['case'] + HOW_MEASURED.sub('', rest), match['who'], is_wall_time


def read_reports(paths):
    """Gives {case: {who: (value, kind)}}, report by report; kind is 'time', 'count' or 'bytes'.

    Interleaved runs come in no order, so the cases of a report are sorted."""
    cases = {}
    for path in paths:
        for case, measured in sorted(read_report(path).items(), key=lambda item: natural_order(item[0])):
            cases.setdefault(case, {}).update(measured)
    return cases


def natural_order(case):
    return [int(part) if part.isdigit() else part for part in re.split(r'(\d+)', case)]


def read_report(path):
    cases = {}
    with open(path, encoding='utf-8') as file:
        text = file.read()
    if not text.strip():
        return cases
    entries = json.loads(text).get('benchmarks', [])
    has_medians = {entry.get('run_name') for entry in entries if entry.get('aggregate_name') == 'median'}
    for entry in entries:
        name = entry.get('run_name', entry['name'])
        if entry.get('error_occurred'):
            print(f"{entry['name']}: {entry.get('error_message', 'failed')}", file=sys.stderr)
            continue
        if name in has_medians and entry.get('aggregate_name') != 'median':
            continue
        if entry.get('run_type') == 'aggregate' and entry.get('aggregate_name') != 'median':
            continue
        parts = split_name(name)
        if parts is None:
            print(f'{name}: does not say whose it is', file=sys.stderr)
            continue
        case, who, is_wall_time = parts
        unit = entry.get('time_unit', 'ns')
        value = float(entry['real_time' if is_wall_time else 'cpu_time'])
        kind = 'time' if unit in TIME_UNITS else unit
        # Several runs without an aggregate: the fastest counts.
        value *= TIME_UNITS.get(unit, 1.0)
        earlier = cases.setdefault(case, {}).get(who)
        if earlier is None or value < earlier[0]:
            cases[case][who] = (value, kind)
    return cases


def show(measured):
    value, kind = measured
    if kind == 'count':
        return f'{value:.0f}'
    if kind == 'bytes':
        return f'{value / 1024:.0f} KiB'
    for unit, scale in (('s', 1e9), ('ms', 1e6), ('us', 1e3)):
        if value >= scale:
            return f'{value / scale:.3g} {unit}' if value < 999.5 * scale else f'{value / scale:.0f} {unit}'
    return f'{value:.3g} ns'


def ratio(ours, peer):
    return f'{ours[0] / peer[0]:.2f}' if peer[0] > 0 else '-'


def make_rows(cases, all_peers):
    rows = []
    for case, measured in cases.items():
        ours = measured.get('ours')
        peers = sorted(((value, who) for who, value in measured.items() if who != 'ours'), key=lambda peer: peer[0][0])
        if ours is None or not peers:
            rows.append((case, show(ours) if ours else '-', ', '.join(f'{who} {show(value)}' for value, who in peers) or '-',
                         '-'))
            continue
        best = [peer for peer in peers if peer[1] not in OWN_FORMS] or peers
        for value, who in peers if all_peers else best[:1]:
            rows.append((case, show(ours), f'{who} {show(value)}', ratio(ours, value)))
    return rows


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('--all-peers', action='store_true', help='a row for every peer, not only the best')
    parser.add_argument('--markdown', action='store_true', help='rows for docs/performance.md')
    parser.add_argument('reports', nargs='+')
    arguments = parser.parse_args()

    rows = make_rows(read_reports(arguments.reports), arguments.all_peers)
    if not rows:
        print('bench_table.py: no benchmark matched', file=sys.stderr)
        return 1
    head = ('case', 'ours', 'peer' if arguments.all_peers else 'best peer', 'ratio')
    if arguments.markdown:
        print('| ' + ' | '.join(head) + ' |')
        print('|---|--:|--:|--:|')
        for row in rows:
            print('| ' + ' | '.join(cell.replace('|', '\\|') for cell in row) + ' |')
        return 0
    widths = [max(len(row[column]) for row in [head, *rows]) for column in range(len(head))]
    for row in [head, *rows]:
        print('  '.join([row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]))
    return 0


if __name__ == '__main__':
    sys.exit(main())
