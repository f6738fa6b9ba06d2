#!/usr/bin/env python3
"""Joins the rows of the workflow's jobs into the campaign table.

    join_rows.py TABLE.csv ROWS.csv...

TABLE.csv gets one header and the rows of every ROWS.csv, in the order given.
"""
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import campaign_table  # noqa: E402


def main():
    table, parts = sys.argv[1], sys.argv[2:]
    campaign_table.write_table(table, [row for part in parts for row in campaign_table.read_table(part)])


if __name__ == "__main__":
    main()
