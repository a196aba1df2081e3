#!/usr/bin/env python3
"""Whole-process comparison: each qvdb command against what a shell user would run instead
(the sqlite3 shell, cp or cat), on the 65,000-row stock list. Both sides are timed the same way:
hyperfine starts the process, without a shell in between, after warm-up runs. The two sides of
a job run alternately, in rounds, and the table shows the medians over all rounds.

usage: compare.py QVDB [--quorvant PATH --display :N] [--rounds R] [--runs N] [--work DIR]
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import make_stock_csv  # noqa: E402

SQL_TABLE = ("create table t(Name text, Qty integer, Price real, Supplier text, "
             "InStock text, Notes text)")


def run(args, **kw):
    subprocess.run(args, check=True, stdout=subprocess.DEVNULL, **kw)


def prepare(work, qvdb):
    """The starting files: the CSV, the database made from it, the sqlite3 database, and the
    copies with three filter conditions (two set here) and two calculated fields."""
    j = lambda name: os.path.join(work, name)  # noqa: E731
    make_stock_csv.main(j("stock.csv"))
    run([qvdb, "new", j("base.PDB"), "--from-csv", j("stock.csv"), "--force"])
    for f in (j("base.db"), j("filter.db"), j("calc.db")):
        if os.path.exists(f):
            os.remove(f)
    run(["sqlite3", j("base.db"), SQL_TABLE, f".import --csv --skip 1 {j('stock.csv')} t"])
    shutil.copy(j("base.PDB"), j("filter.PDB"))
    run([qvdb, "filter", j("filter.PDB"), "set", "1", "--field", "Name", "--contains", "bolt"])
    run([qvdb, "filter", j("filter.PDB"), "set", "2", "--field", "Qty", "--range", "100", "5000"])
    shutil.copy(j("base.db"), j("filter.db"))
    shutil.copy(j("base.PDB"), j("calc.PDB"))
    run([qvdb, "calc", j("calc.PDB"), "--field", "Value", "--formula", "F2 * F3"])
    run([qvdb, "calc", j("calc.PDB"), "--field", "Tax", "--formula", "F3 * 0.2"])
    shutil.copy(j("base.db"), j("calc.db"))
    run(["sqlite3", j("calc.db"), "alter table t add column Value real",
         "alter table t add column Tax real"])


def jobs(work, qvdb):
    """(job, qvdb command, its prepare, other command, its prepare, what the other is)."""
    j = lambda name: os.path.join(work, name)  # noqa: E731
    w_pdb, w_db = j("w.PDB"), j("w.db")
    return [
        ("new --from-csv", f"{qvdb} new {w_pdb} --from-csv {j('stock.csv')}", f"rm -f {w_pdb}",
         f"sqlite3 {w_db} '{SQL_TABLE}' '.import --csv --skip 1 {j('stock.csv')} t'",
         f"rm -f {w_db}", "sqlite3 .import into a typed table"),
        ("export --header", f"{qvdb} export {j('base.PDB')} {j('out.csv')} --header", None,
         f"sqlite3 -csv -header -cmd '.output {j('out2.csv')}' {j('base.db')} 'select * from t'",
         None, "sqlite3 -csv -header select *"),
        ("sort Name", f"{qvdb} sort {w_pdb} Name", f"cp {j('base.PDB')} {w_pdb}",
         f"sqlite3 {w_db} 'create table s as select * from t order by Name; drop table t'",
         f"cp {j('base.db')} {w_db}", "sqlite3 create table as ... order by; drop"),
        ("filter set (3 conditions)",
         f"{qvdb} filter {w_pdb} set 3 --field InStock --checked 1",
         f"cp {j('filter.PDB')} {w_pdb}",
         f"sqlite3 {w_db} \"create table f as select rowid from t where Name like '%bolt%' "
         f"and Qty between 100 and 5000 and InStock = 'yes'\"",
         f"cp {j('filter.db')} {w_db}", "sqlite3 create table as select ... where (3 terms)"),
        ("recalc (2 calculated)", f"{qvdb} recalc {w_pdb}", f"cp {j('calc.PDB')} {w_pdb}",
         f"sqlite3 {w_db} 'update t set Value = Qty * Price, Tax = Price * 0.2'",
         f"cp {j('calc.db')} {w_db}", "sqlite3 update of 2 columns"),
        ("set 1 Qty=5", f"{qvdb} set {w_pdb} 1 Qty=5", f"cp {j('base.PDB')} {w_pdb}",
         f"cp {j('base.PDB')} {j('y.PDB')}", None, "cp of the file"),
        ("set 1 Qty=5, flushed copy", f"{qvdb} set {w_pdb} 1 Qty=5", f"cp {j('base.PDB')} {w_pdb}",
         f"dd if={j('base.PDB')} of={j('y.PDB')} bs=8M conv=fsync status=none", None,
         "dd conv=fsync of the file (a copy that flushes, as a save does)"),
        ("info", f"{qvdb} info {j('base.PDB')}", None, f"cat {j('base.PDB')}", None,
         "cat of the file"),
        ("list (aligned text)", f"{qvdb} list {j('base.PDB')}", None,
         f"sqlite3 -column -header {j('base.db')} 'select * from t'", None,
         "sqlite3 -column -header select *"),
    ]


def sqlite_durability(work):
    """How the sqlite3 shell commits here: its journal mode and how often it flushes."""
    p = subprocess.run(["sqlite3", os.path.join(work, "base.db"), "pragma journal_mode",
                        "pragma synchronous"], check=True, stdout=subprocess.PIPE, text=True)
    mode, sync = (p.stdout.split() + ["?", "?"])[:2]
    names = {"0": "OFF", "1": "NORMAL", "2": "FULL", "3": "EXTRA"}
    return f"journal_mode={mode}, synchronous={names.get(sync, sync)}"


def hyperfine(command, prep, runs, out):
    args = ["hyperfine", "-N", "--style", "none", "--warmup", "1", "--runs", str(runs),
            "--export-json", out]
    if prep:
        args += ["--prepare", prep]
    subprocess.run(args + [command], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    with open(out) as f:
        r = json.load(f)["results"][0]
    return r["times"], [r["user"] + r["system"]]  # hyperfine gives the CPU time as a mean


def peak_kib(command, prep):
    if prep:
        subprocess.run(prep, shell=True, check=True)
    p = subprocess.run(["/usr/bin/time", "-f", "%M", "sh", "-c", f"exec {command} >/dev/null"],
                       check=True, stderr=subprocess.PIPE, text=True)
    return int(p.stderr.strip().splitlines()[-1])


def loadavg():
    with open("/proc/loadavg") as f:
        return " ".join(f.read().split()[:3])


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("qvdb")
    ap.add_argument("--rounds", type=int, default=5)
    ap.add_argument("--runs", type=int, default=3)
    ap.add_argument("--work")
    ap.add_argument("--quorvant")
    ap.add_argument("--display", default=os.environ.get("DISPLAY", ""))
    a = ap.parse_args()
    qvdb = os.path.abspath(a.qvdb)
    work = a.work or tempfile.mkdtemp(prefix="qvcompare-")
    os.makedirs(work, exist_ok=True)
    prepare(work, qvdb)
    # The files just made are still being written back; a user's files are on disk already, and
    # a flush in a timed run would otherwise also wait for these.
    os.sync()
    load_before = loadavg()
    table = []
    for name, qcmd, qprep, ocmd, oprep, what in jobs(work, qvdb):
        qt, qc, ot, oc = [], [], [], []
        # An untimed round first: neither side starts its timed runs while the disk is still
        # writing back what the previous job wrote.
        hyperfine(qcmd, qprep, a.runs, os.path.join(work, "q.json"))
        hyperfine(ocmd, oprep, a.runs, os.path.join(work, "o.json"))
        for r in range(a.rounds):  # the two sides alternate, and take turns going first
            sides = [(qcmd, qprep, "q.json", qt, qc), (ocmd, oprep, "o.json", ot, oc)]
            for cmd, prep, out, times, cpu in (sides if r % 2 == 0 else sides[::-1]):
                t, c = hyperfine(cmd, prep, a.runs, os.path.join(work, out))
                times += t
                cpu += c
        qm, om = statistics.median(qt), statistics.median(ot)
        table.append((name, qm, om, what, qm / om,
                      statistics.median(qc) if qc else float("nan"),
                      statistics.median(oc) if oc else float("nan"),
                      peak_kib(qcmd, qprep)))
        print(f"  {name}: {qm * 1000:.1f} ms vs {om * 1000:.1f} ms", file=sys.stderr)
    baseline = peak_kib(f"{qvdb} --version", None)
    size = os.path.getsize(os.path.join(work, "base.PDB"))
    print(f"65,000 records; database {size / 1e6:.1f} MB, CSV "
          f"{os.path.getsize(os.path.join(work, 'stock.csv')) / 1e6:.1f} MB; "
          f"medians of {a.rounds * a.runs} runs per side ({a.rounds} alternating rounds of "
          f"{a.runs} after an untimed round, one warm-up run each); wall time; CPU is user+system, "
          f"the median of the rounds' means")
    print(f"load average before {load_before}, after {loadavg()}")
    print(f"sqlite3 commits with {sqlite_durability(work)} (journal and database flushed); "
          "qvdb saves flush too (see docs/PERFORMANCE.md)\n")
    limit = 3 * size / 1024 + baseline
    print("| job | qvdb | other | other is | ratio | qvdb CPU | other CPU | qvdb peak RSS |")
    print("|---|---:|---:|---|---:|---:|---:|---:|")
    for name, qm, om, what, ratio, qc, oc, peak in table:
        over = "" if peak <= limit else " (over)"
        print(f"| {name} | {qm * 1000:.1f} ms | {om * 1000:.1f} ms | {what} | {ratio:.2f}× | "
              f"{qc * 1000:.1f} ms | {oc * 1000:.1f} ms | {peak / 1024:.1f} MiB{over} |")
    print(f"\nqvdb --version peak RSS (the Qt Core baseline): {baseline / 1024:.1f} MiB; "
          f"3× the file plus it: {limit / 1024:.1f} MiB")
    if a.quorvant:
        import gui_open
        print()
        gui_open.report(a.quorvant, os.path.join(work, "base.PDB"), a.display,
                        a.rounds * a.runs, work)
    if not a.work:
        shutil.rmtree(work)


if __name__ == "__main__":
    main()
