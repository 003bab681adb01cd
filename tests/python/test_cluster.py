"""Sweeps on a cluster: two workers on this machine; the same as without, also when one is lost."""
import os
import resource
import signal
import threading
import time

import numpy
import pytest

import kesto
from kesto import cluster
from kesto.sweep import Plan, as_design

P = {"tank.size": (200, 8000), "roof.size": (20, 200)}
pytestmark = [pytest.mark.filterwarnings("ignore::DeprecationWarning"), pytest.mark.filterwarnings("ignore::ResourceWarning")]


@pytest.fixture(scope="module")
def client():
    distributed = pytest.importorskip("distributed")
    with distributed.LocalCluster(host="127.0.0.1", n_workers=2, threads_per_worker=1, dashboard_address="127.0.0.1:0") as local:
        with distributed.Client(local) as client:
            client.wait_for_workers(2)
            yield client


def equal(one, other):
    assert one.members.equals(other.members)
    assert one.figures.equals(other.figures) and one.figures.attrs == other.figures.attrs
    assert one.flows.identical(other.flows)


def test_a_thousand_members_equal_those_of_jobs(house, client):
    design = kesto.lhs(P, 1000, seed=1)
    equal(house.sweep(design, record="tank:overflow", client=client), house.sweep(design, record="tank:overflow"))


@pytest.mark.parametrize("lost", [1, 2])
def test_lost_workers_change_nothing(house, client, monkeypatch, lost):
    """Also when all are lost, and with them the model that they were sent."""
    monkeypatch.setattr(cluster, "CHUNK_SECONDS", 0.2)
    client.wait_for_workers(2)
    design = kesto.lhs(P, 600, seed=2)
    workers = list(client.run(os.getpid).values())[:lost]

    def kill_while_chunks_run():
        while sum(map(len, client.processing().values())) < 2:
            time.sleep(0.005)
        for worker in workers:
            os.kill(worker, signal.SIGKILL)

    killer = threading.Thread(target=kill_while_chunks_run, daemon=True)
    killer.start()
    swept = house.sweep(design, record="tank:overflow", client=client)
    assert not killer.is_alive()
    equal(swept, house.sweep(design, record="tank:overflow"))


def test_members_that_fail_are_rows(client):
    from conftest import ROOT

    model = kesto.load(ROOT / "tests/command/failing/infeasible.toml")
    design = {"simulation.stop_on_infeasible": [True, False] * 10}
    swept = model.sweep(design, record="all", client=client)
    assert list(swept.failed.index) == list(range(1, 21, 2))
    assert numpy.isnan(swept.flows.sel(member=1)).all()
    equal(swept, model.sweep(design, record="all"))


def test_a_wrong_cell_is_a_model_error(house, client):
    with pytest.raises(kesto.ModelError, match="member 30 of the design"):
        house.sweep({"tank.size": [1000.0] * 29 + [-5.0]}, client=client)


def test_studies_run_on_it(house, client):
    observed = house.run({"tank.size": 3000, "roof.size": 75}).flows.sel(flow="tank:overflow")
    found = [house.calibrate(P, {"tank:overflow": observed}, max_members=40, seed=1, **how)
             for how in ({"client": client}, {"jobs": 2})]
    assert found[0].history.equals(found[1].history)


def test_what_is_kept_is_what_one_machine_keeps(house, client, tmp_path):
    design = kesto.lhs(P, 40, seed=1)
    kept = house.sweep(design, record="tank:overflow", client=client, keep=tmp_path / "cluster")
    alone = house.sweep(design, record="tank:overflow", keep=tmp_path / "alone")
    assert kept.folder == tmp_path / "cluster"
    equal(kept, alone)
    assert (tmp_path / "cluster/members.csv").read_bytes() == (tmp_path / "alone/members.csv").read_bytes()


def test_files_that_members_name_are_sent(own_house, client):
    weather = own_house.parent / "weather.csv"
    (own_house.parent / "more").mkdir()
    rows = weather.read_text().splitlines()
    (own_house.parent / "more/late.csv").write_text("\n".join(rows) + "\n")
    model = kesto.load(own_house)
    package = cluster.pack(Plan.of(model), as_design({"series.file": ["weather.csv", "more/late.csv"]}))
    assert set(package.files) == {"model.toml", "weather.csv", "more/late.csv", "kesto-design.csv"}
    swept = model.sweep({"series.file": ["weather.csv", "more/late.csv"]}, client=client)
    assert not len(swept.failed)


def cpu(call):
    def used():
        return sum(sum(resource.getrusage(who)[:2]) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN))

    begin = used()
    call()
    return used() - begin


@pytest.mark.long
def test_chunks_cost_little(house):
    """What a chunk costs beside its members is at most 5 % of the CPU of a chunk of two seconds."""
    design = kesto.lhs(P, 960, seed=3)
    plan = Plan.of(house, record="tank:overflow")
    package = cluster.pack(plan, as_design(design))
    one = min(cpu(lambda: cluster.run_chunk(package, plan, 1, 960)) for _ in range(3))
    many = min(cpu(lambda: [cluster.run_chunk(package, plan, a, b) for a, b in cluster.slices(1, 960, 60)])
               for _ in range(3))
    each = (many - one) / 15
    print(f"a member {1000 * one / 960:.2f} ms, a chunk {1000 * each:.1f} ms")
    assert each <= 0.05 * cluster.CHUNK_SECONDS
