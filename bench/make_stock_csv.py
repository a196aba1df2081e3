#!/usr/bin/env python3
"""Writes the benchmark's stock list: 65,000 rows of six columns (text, integer, decimal,
text, yes/no, text), the same bytes on every run (a fixed seed)."""
import random
import sys

ROWS = 65000
WORDS = ["bolt", "nut", "washer", "screw", "hinge", "bracket", "spring", "clamp", "rivet",
         "gasket", "valve", "pulley", "bearing", "flange", "spacer", "anchor"]
SUPPLIERS = ["Acme Ltd", "Brightway", "Castle & Sons", "Delta Parts", "Everfix",
             "Fulton Supply", "Granite Co", "Harbour Tools"]


def main(path):
    rng = random.Random(20240615)
    with open(path, "w", newline="") as out:
        out.write("Name,Qty,Price,Supplier,InStock,Notes\n")
        for i in range(ROWS):
            name = f"{rng.choice(WORDS)} {rng.choice(WORDS)} {i:05d}"
            qty = rng.randint(1, 9999)
            price = f"{rng.randint(1, 99999) / 100:.2f}"
            supplier = rng.choice(SUPPLIERS)
            stock = rng.choice(("yes", "no"))
            note = " ".join(rng.choice(WORDS) for _ in range(rng.randint(1, 5)))
            if rng.random() < 0.05:
                note = f'"{note}, see ""bin {rng.randint(1, 99)}"""'
            out.write(f"{name},{qty},{price},{supplier},{stock},{note}\n")


if __name__ == "__main__":
    main(sys.argv[1] if len(sys.argv) > 1 else "stock.csv")
