"""Threads, processes, and memory over many calls."""

import concurrent.futures
import gc
import multiprocessing
import threading

import numpy as np
import pytest
import zelsolver
from conftest import SAMPLE, Plate, assert_plate, truss_designs


def test_threads_share_projects(plate, truss):
    # Failing calls among them: each thread must find its own error text.
    areas = truss_designs(30)
    expected = truss.solve(areas, errors=True).to_array()

    def work(number):
        for i in range(40):
            designs = Plate.designs(20, seed=number)
            assert_plate(plate.solve(designs), designs)
            if number % 2:
                np.testing.assert_array_equal(truss.solve(areas, errors=True).to_array(), expected)
            designs[7, 1] = 2 + number
            with pytest.raises(zelsolver.BoundsError, match=f"^Value {2 + number} of Parameter y "):
                plate.gradients(designs, "mass")
            name = f"none_{number}_{i}"
            with pytest.raises(zelsolver.UnknownNameError, match=name):
                plate.reference_value(name)
            with pytest.raises(zelsolver.InputError, match=name):
                zelsolver.evaluate(name)
            with zelsolver.Project(Plate.path) as other:
                assert other.inputs == Plate.inputs

    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        for result in [pool.submit(work, number) for number in range(8)]:
            result.result()


def test_the_number_of_threads_is_set_for_calls_to_come(truss):
    areas = truss_designs(3000)
    solutions = []
    try:
        for number in (1, 2, None):
            zelsolver.set_num_threads(number)
            solutions.append(truss.predict(areas).array)
        for wrong in (0, -1, 1.5, 1025, float("nan")):
            with pytest.raises(ValueError):
                zelsolver.set_num_threads(wrong)
    finally:
        zelsolver.set_num_threads()
    for solution in solutions:
        np.testing.assert_array_equal(solution, solutions[0])


def test_closing_lets_the_call_of_another_thread_finish():
    areas = truss_designs(2000)
    project = zelsolver.Project(SAMPLE)
    expected = project.predict(areas).array
    started = threading.Event()

    def work():
        while True:
            started.set()
            np.testing.assert_array_equal(project.predict(areas), expected)

    with concurrent.futures.ThreadPoolExecutor(1) as pool:
        future = pool.submit(work)
        started.wait()
        project.close()
        with pytest.raises(zelsolver.ClosedError):
            future.result(60)


def test_a_forked_process_may_call_while_threads_of_its_parent_do(plate):
    designs = Plate.designs(5)
    stop = threading.Event()

    def work():
        while not stop.is_set():
            plate.solve(Plate.designs(3000))

    def child(connection):
        connection.send(dict(plate.solve(designs)))

    thread = threading.Thread(target=work)
    thread.start()
    try:
        for _ in range(5):
            here, there = multiprocessing.Pipe()
            process = multiprocessing.get_context("fork").Process(target=child, args=(there,))
            process.start()
            try:
                assert here.poll(30), "the child hangs"
                assert_plate(here.recv(), designs)
            finally:
                process.kill()
                process.join()
    finally:
        stop.set()
        thread.join()


def test_projects_without_references_are_closed():
    opened = zelsolver.handle._open_files
    for make in (lambda: zelsolver.Project(Plate.path),
                 lambda: zelsolver.Project.from_bytes(Plate.path.read_bytes())):
        cycle = [make()]
        cycle.append(cycle)
        assert sum(opened._users.values()) == 1
        del cycle
        gc.collect()
        assert not opened._users and not opened._opened
    # Collected while a call runs: the next opening or closing does it.
    project = zelsolver.Project(Plate.path)
    with zelsolver.library.get_library().lock:
        del project
        assert opened.dropped
    with zelsolver.Project(SAMPLE):
        assert len(opened._opened) == 1


def resident():
    """Bytes of this process in memory."""
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * 4096


def grows_by(action, times):
    """Bytes that a warmed-up process grows by."""
    for _ in range(times // 4):
        action()
    gc.collect()
    before = resident()
    for _ in range(times):
        action()
    gc.collect()
    return resident() - before


def open_one():
    with zelsolver.Project.from_bytes(Plate.path.read_bytes()) as project:
        assert project.describe()["criteria"]


def refused():
    with pytest.raises(zelsolver.InputError):
        zelsolver.train({"x": [1.0, 2.0], "y": ["a", "b"]}, "x", "z")


# The allocator keeps some pages. A thing that stays is larger, in all calls, than the limit: a
# result of 200 bytes in 1e5 calls, 50 KB of a project in 100, 20 KB of a solution in 200.
@pytest.mark.parametrize("action, times, limit", [
    (lambda: zelsolver.evaluate("1 + a", a=2), 100_000, 4e6), (refused, 20_000, 3e6),
    (open_one, 100, 4e6),
])
def test_calls_leave_nothing_behind(action, times, limit):
    assert grows_by(action, times) < limit


def test_predictions_leave_nothing_behind(truss):
    designs, few = truss_designs(400), truss_designs(3)

    def calls():
        truss.predict(designs)
        truss.solve(few, errors=True, density=True)
        truss.gradients(few, "mass")
        for wrong in (few * 100, few.T):
            with pytest.raises(zelsolver.InputError):
                truss.solve(wrong)

    assert grows_by(calls, 200) < 3e6
    with zelsolver.Project(Plate.path):  # files come and go while another stays open
        assert grows_by(lambda: zelsolver.Project(SAMPLE).close(), 60) < 8e6
